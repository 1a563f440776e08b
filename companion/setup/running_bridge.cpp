#include "companion/setup/running_bridge.h"

#include "companion/doctor/bridge_program.h"

#include <algorithm>

namespace {

bool isOfSimulator(const ProcessFacts& bridge, const std::vector<ProcessFacts>& processes) {
    return std::ranges::any_of(processes, [&bridge](const ProcessFacts& process) {
        return process.id == bridge.parent && isSimulatorProcess(process.name);
    });
}

} // namespace

std::optional<RunningBridge> findBridge(const std::vector<ProcessFacts>& processes) {
    std::optional<RunningBridge> found;
    for (const ProcessFacts& process : processes) {
        if (isBridgeProcess(process.name) && (!found || !found->isOfSimulator)) {
            found = RunningBridge{process.id, isOfSimulator(process, processes)};
        }
    }
    return found;
}
