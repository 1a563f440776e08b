// The tests need a console to start the bridge from, and a screen of it that nobody else writes to. So this program
// starts itself once more in a console without a window, which exists where there is no display, too.

#include "platform/crash_line.h"
#include "tests/windows/child_process.h"
#include "tests/windows/crash_options.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <string_view>

namespace {

constexpr const char* insideVariable = "BRIDGE_TEST_HAS_CONSOLE";

int runInOwnConsole() {
    SetEnvironmentVariableA(insideVariable, "1");
    const ChildProcess inside(GetCommandLineA(), ownStreams(), CREATE_NO_WINDOW);
    return static_cast<int>(inside.exitCode(INFINITE));
}

/// Starts the rest of the command line as a process of its own, for tests that need one more process in between.
int startRest(const std::string& commandLine) {
    const std::size_t behindOption = commandLine.find(startRestOption) + startRestOption.size();
    const ChildProcess child(commandLine.substr(commandLine.find_first_not_of(' ', behindOption)), ownStreams());
    return static_cast<int>(child.exitCode(INFINITE));
}

/// Ends by an instruction that doesn't exist, or as an uncaught exception does.
int crash(std::string_view kind, const char* file) {
    SetErrorMode(SEM_NOGPFAULTERRORBOX);
    installCrashLine(file, "VantrelBridgeHID", "1.2.3");
    if (kind == abortOption) {
        std::abort();
    }
    __builtin_trap();
}

} // namespace

int main(int argc, char** argv) {
    if (argc > 1 && argv[1] == startRestOption) {
        return startRest(GetCommandLineA());
    }
    if (argc > 2 && (argv[1] == trapOption || argv[1] == abortOption)) {
        return crash(argv[1], argv[2]);
    }
    if (GetEnvironmentVariableA(insideVariable, nullptr, 0) == 0) {
        return runInOwnConsole();
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
