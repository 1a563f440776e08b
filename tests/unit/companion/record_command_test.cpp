#include "companion/cli/record_command.h"

#include "companion/cli/exit_code.h"
#include "platform/file_system.h"
#include "tests/support/temp_folder.h"

#include <CLI/CLI.hpp>
#include <gtest/gtest.h>

#include <cerrno>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

TEST(RecordCommand, LeavesTheOldRecordWhenItCannotBegin) {
    struct Row {
        const char* vid;
        const char* file;
        bool hasThreads;
        std::string error;
    };
    const std::string noFolder = std::generic_category().message(ENOENT);
    for (const auto& [vid, file, hasThreads, error] :
         {Row{"zz", "old", true, "Invalid VID/PID"}, Row{"16C0", "old", false, "Failed to start the worker: "},
          Row{"16C0", "none/new", true, "none/new can't be opened: " + noFolder + '\n'}}) {
        const TempFolder folder;
        folder.write("config.json", std::string(R"({"hid": {"vid": ")") + vid +
                                        R"(", "pid": "27db"}, "mappings": {"buttonConfigPath": "buttons.json"}})");
        folder.write("buttons.json", R"({"buttons": []})");
        folder.write("old", "record");
        Platform platform = systemPlatform();
        if (!hasThreads) {
            platform.host.startThread = [](const auto&) -> std::thread {
                throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
            };
        }
        CLI::App program;
        const RecordCommand command(program, platform);
        // In reverse, as the parser takes a list.
        program.parse(
            std::vector<std::string>{folder.path("config.json"), "--config", "--force", folder.path(file), "record"});
        std::ostringstream out;
        std::ostringstream err;
        EXPECT_EQ(command.run(out, err), ExitCode::couldNotLook);
        EXPECT_NE(err.str().find(error), std::string::npos) << err.str();
        std::string old;
        FileSystem::readFile(folder.path("old"), old);
        EXPECT_EQ(old, "record") << error;
    }
}
