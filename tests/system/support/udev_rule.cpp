#include "tests/system/support/udev_rule.h"

#include "tests/support/wait_until.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace {

// Forgotten with the machine's next start, whatever becomes of the test.
const std::filesystem::path rulesFolder = "/run/udev/rules.d";
const std::filesystem::path ruleFile = rulesFolder / "70-vantrel-system-test.rules";

void runUdevadm(const std::vector<std::string>& arguments) {
    std::vector<std::string> command{"/usr/bin/udevadm"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    ChildProcess udevadm({.command = command});
    if (udevadm.waitForExit() != 0) {
        throw std::runtime_error("udevadm " + arguments.front() + ": " + udevadm.errorOutput());
    }
}

} // namespace

UdevRule::UdevRule(const std::string& text) {
    const std::filesystem::path control = "/run/udev/control";
    std::filesystem::create_directories(rulesFolder);
    std::ofstream(ruleFile) << text << '\n';
    if (!std::filesystem::exists(control)) {
        udev = std::make_unique<ChildProcess>(ChildProcessSettings{.command = {"/lib/systemd/systemd-udevd"}});
        waitUntil([&] { return std::filesystem::exists(control); }, ChildProcess::defaultLimit);
    }
    runUdevadm({"control", "--reload"});
}

UdevRule::~UdevRule() {
    std::filesystem::remove(ruleFile);
    if (udev) {
        udev->sendSignal(SIGTERM);
        udev->waitForExit();
    }
}
