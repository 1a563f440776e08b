#include "platform/crash_line.h"
#include "platform/file_system.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <regex>
#include <string>

namespace {

void crashInProgram() {
    __builtin_trap();
}

int useStack(int depth) { // NOLINT(misc-no-recursion)
    volatile char room[65536];
    room[0] = 1;
    return depth == 0 ? 0 : room[0] + useStack(depth - 1);
}

void exhaustStack() {
    useStack(1 << 20);
}

struct CrashEnd {
    const char* name;
    void (*crash)();
    int signal;
    const char* line;
};

class CrashOnLinux : public testing::TestWithParam<CrashEnd> {};

TEST_P(CrashOnLinux, LeavesOneLineAndTheSystemsSignal) {
    const TempFolder folder;
    const std::string file = folder.path("crash.log");
    EXPECT_EXIT(
        {
            installCrashLine(file, "VantrelBridgeHID", "1.2.3");
            GetParam().crash();
        },
        testing::KilledBySignal(GetParam().signal), "");
    std::string text;
    FileSystem::readFile(file, text);
    EXPECT_TRUE(std::regex_match(text, std::regex(GetParam().line))) << text;
}

INSTANTIATE_TEST_SUITE_P(
    All, CrashOnLinux,
    testing::Values(CrashEnd{"Trap", crashInProgram, SIGILL,
                             "VantrelBridgeHID 1\\.2\\.3 crashed: signal 0x4 at VantrelBridgeHID\\+0x[0-9A-F]+\n"},
                    CrashEnd{"Stack", exhaustStack, SIGSEGV,
                             "VantrelBridgeHID 1\\.2\\.3 crashed: signal 0xB at VantrelBridgeHID\\+0x[0-9A-F]+\n"},
                    CrashEnd{"Abort", std::abort, SIGABRT,
                             "VantrelBridgeHID 1\\.2\\.3 crashed: signal 0x6 at 0x[0-9A-F]+, outside the program\n"}),
    [](const auto& end) { return std::string(end.param.name); });

} // namespace
