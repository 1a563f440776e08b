#include "companion/doctor/running_check.h"

#include "app/app_paths.h"
#include "companion/doctor/bridge_program.h"
#include "platform/file_system.h"

#include <string_view>

namespace {

/// The folder itself, or the nearest one above it that exists.
std::string existingFolder(std::string folder) {
    while (!folder.empty() && !FileSystem::existsOrFalse(folder)) {
        const std::string parent = FileSystem::parentPath(folder);
        folder = parent == folder ? std::string() : parent;
    }
    return folder;
}

} // namespace

RunningFacts readRunningFacts(const Host& host) {
    RunningFacts facts;
    host.findProcess([&facts](std::string_view process) {
        facts.bridge = facts.bridge || isBridgeProcess(process);
        if (isSimulatorProcess(process)) {
            facts.simulator = process;
        }
        return false;
    });
    return facts;
}

void judgeRunning(const RunningFacts& facts, CheckResults& results) {
    CheckTopic topic(results, "Running now");
    if (facts.bridge) {
        topic.good("bridge-runs",
                   facts.simulator.empty() ? "the bridge, but no simulator" : "the bridge and " + facts.simulator);
    } else if (facts.simulator.empty()) {
        topic.good("nothing-runs", "neither a simulator nor the bridge");
    } else {
        topic.warning(
            "bridge-not-running", facts.simulator + ", but not the bridge",
            "Start the bridge; its log says why if it ends at once. Registered, it starts with the simulator.");
    }
}

void checkLogFolder(const Machine& machine, CheckResults& results) {
    CheckTopic topic(results, "Log folder");
    const std::string folder = logDirectory(false, commonAppDataDirectory(machine.host), exeDirectory(machine.host));
    const std::string existing = existingFolder(folder);
    if (existing.empty() || !machine.canWriteInto(existing)) {
        topic.fault("log-folder-unwritable", "nothing can be written to " + (existing.empty() ? folder : existing),
                    "Check its permissions and the free space on the disk: without a log, nothing says what is wrong.");
    } else {
        topic.good("log-folder-writable", folder);
    }
}
