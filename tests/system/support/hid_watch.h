#pragma once

#include "tests/system/support/child_process.h"

#include <cstddef>
#include <memory>
#include <string>

/// Which boards Wine's HID stack knows: a program beside the bridge lists them after each change. It also keeps Wine's
/// desktop alive between the tests, since making one takes longer than most tests.
class HidWatch {
public:
    /// Started at the first use.
    static HidWatch& ofThisRun();

    /// Waits until exactly that many boards are there; false after the limit.
    bool waitForDevices(std::size_t count);

    /// The paths last listed.
    std::string lastDevices() { return lastLine(program->output()); }

private:
    HidWatch();

    static std::string lastLine(const std::string& output);

    std::unique_ptr<ChildProcess> program;
};
