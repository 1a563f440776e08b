#include "app/standard_outputs.h"

#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace {

/// A standard stream that leads to a file and holds back what it is given, as the C library of Windows does it with
/// every stream but a console's.
class HeldBackOutput {
public:
    HeldBackOutput(std::FILE* stream, const std::string& path)
        : stream(stream), file(std::fopen(path.c_str(), "wb")), before(dup(fileno(stream))) {
        std::fflush(stream);
        dup2(fileno(file), fileno(stream));
        // A buffer of its own: standard error may have been used already, and keeps the single byte that it began with.
        std::setvbuf(stream, buffer.data(), _IOFBF, buffer.size());
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
    std::array<char, 4096> buffer{};
};

/// The file's size before the flush and after it, with a text of four bytes written to the stream.
std::vector<std::uint64_t> sizesAroundFlush(std::FILE* stream, const std::string& path) {
    const HeldBackOutput output(stream, path);
    std::fputs("text", stream);
    const std::uint64_t before = FileSystem::fileSize(path).value_or(0);
    flushStandardOutputs();
    return {before, FileSystem::fileSize(path).value_or(0)};
}

// Nothing is asserted while a stream is redirected: the report would go into the file.
TEST(StandardOutputs, AreBothWrittenOut) {
    const TempFolder folder;
    EXPECT_EQ(sizesAroundFlush(stdout, folder.path("output")), (std::vector<std::uint64_t>{0, 4}));
    EXPECT_EQ(sizesAroundFlush(stderr, folder.path("errors")), (std::vector<std::uint64_t>{0, 4}));
}

} // namespace
