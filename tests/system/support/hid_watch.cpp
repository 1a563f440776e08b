#include "tests/system/support/hid_watch.h"

#include "tests/system/support/bridge_process.h"
#include "tests/system/support/tested_system.h"

HidWatch& HidWatch::ofThisRun() {
    static HidWatch watch;
    return watch;
}

HidWatch::HidWatch() {
    program = std::make_unique<ChildProcess>(
        ChildProcessSettings{TestedSystem::command(WINDOWS_BUILD_FOLDER "/tests/system/hid-watch.exe", {})});
}

bool HidWatch::waitForDevices(std::size_t count) {
    return program->waitForOutput(
        [count](const std::string& output) { return !output.empty() && countOf(lastLine(output), "#{") == count; });
}

std::string HidWatch::lastLine(const std::string& output) {
    const std::size_t end = output.rfind('\n');
    if (end == std::string::npos || end == 0) {
        return {};
    }
    const std::size_t begin = output.rfind('\n', end - 1);
    return begin == std::string::npos ? output.substr(0, end) : output.substr(begin + 1, end - begin - 1);
}
