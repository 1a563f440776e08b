// The tests need a console to start the bridge from, and a screen of it that nobody else writes to. So this program
// starts itself once more in a console without a window, which exists where there is no display, too.

#include "tests/windows/child_process.h"

#include <gtest/gtest.h>

#include <string>

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

} // namespace

int main(int argc, char** argv) {
    if (argc > 1 && argv[1] == startRestOption) {
        return startRest(GetCommandLineA());
    }
    if (GetEnvironmentVariableA(insideVariable, nullptr, 0) == 0) {
        return runInOwnConsole();
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
