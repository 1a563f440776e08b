// What a crash leaves behind.

#include "tests/support/temp_folder.h"
#include "tests/windows/child_process.h"
#include "tests/windows/crash_options.h"

#include <gtest/gtest.h>

#include <regex>

namespace {

struct CrashCase {
    std::string_view option;
    DWORD exitCode;
    const char* line;
};

class CrashOnWindows : public testing::TestWithParam<CrashCase> {};

TEST_P(CrashOnWindows, LeavesOneLineAndTheSystemsExitCode) {
    const TempFolder folder;
    std::array<char, MAX_PATH> self{};
    GetModuleFileNameA(nullptr, self.data(), MAX_PATH);
    const std::string file = folder.path("crash.log");
    const ChildProcess child('"' + std::string(self.data()) + "\" " + std::string(GetParam().option) + " \"" + file +
                             '"');
    EXPECT_EQ(child.exitCode(), GetParam().exitCode);
    std::string text;
    FileSystem::readFile(file, text);
    EXPECT_TRUE(std::regex_match(text, std::regex(GetParam().line))) << text;
}

INSTANTIATE_TEST_SUITE_P(
    All, CrashOnWindows,
    testing::Values(
        CrashCase{trapOption, EXCEPTION_ILLEGAL_INSTRUCTION,
                  "VantrelBridgeHID 1\\.2\\.3 crashed: exception 0xC000001D at VantrelBridgeHID\\+0x[0-9A-F]+\n"},
        CrashCase{abortOption, 3, "VantrelBridgeHID 1\\.2\\.3 crashed: signal 0x16 at 0x0, outside the program\n"}));

} // namespace
