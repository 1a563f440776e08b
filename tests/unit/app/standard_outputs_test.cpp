#include "app/standard_outputs.h"

#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>

namespace {

/// A standard stream that leads to a file and holds back what it is given, as the C library of Windows does it with
/// every stream but a console's.
class HeldBackOutput {
public:
    HeldBackOutput(std::FILE* output, const std::string& path)
        : stream(output), file(std::fopen(path.c_str(), "wb")), before(dup(fileno(output))) {
        std::fflush(stream);
        dup2(fileno(file), fileno(stream));
        std::setvbuf(stream, nullptr, _IOFBF, BUFSIZ);
    }
    ~HeldBackOutput() {
        std::fflush(stream);
        std::setvbuf(stream, nullptr, _IONBF, 0);
        dup2(before, fileno(stream));
        close(before);
        std::fclose(file);
    }
    HeldBackOutput(const HeldBackOutput&) = delete;
    HeldBackOutput& operator=(const HeldBackOutput&) = delete;

private:
    std::FILE* stream;
    std::FILE* file;
    int before;
};

TEST(StandardOutputs, AreBothWrittenOut) {
    const TempFolder folder;
    for (std::FILE* stream : {stdout, stderr}) {
        const std::string path = folder.path(stream == stdout ? "output" : "errors");
        const HeldBackOutput output(stream, path);
        std::fputs("text", stream);
        ASSERT_EQ(FileSystem::fileSize(path), 0U) << path;
        flushStandardOutputs();
        EXPECT_EQ(FileSystem::fileSize(path), 4U) << path;
    }
}

} // namespace
