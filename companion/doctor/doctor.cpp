#include "companion/doctor/doctor.h"

#include "companion/doctor/board_check.h"
#include "companion/doctor/bridge_program.h"
#include "companion/doctor/exe_xml_check.h"
#include "companion/doctor/log_check.h"
#include "companion/doctor/module_check.h"
#include "companion/doctor/program_check.h"
#include "companion/doctor/running_check.h"
#include "companion/doctor/simconnect_check.h"
#include "companion/doctor/simulator_folders.h"

#include <algorithm>
#include <cstddef>

namespace {

void checkSimulators(const Machine& machine, CheckResults& results) {
    const std::vector<SimulatorFolder> simulators = simulatorFolders(machine.host);
    std::vector<SimConnectXmlFacts> offers(simulators.size());
    std::ranges::transform(simulators, offers.begin(), readSimConnectXmlFacts);
    const SimConnectCfgFacts cfg = readSimConnectCfgFacts(machine, offers);
    for (std::size_t i = 0; i < simulators.size(); ++i) {
        judgeExeXml(readExeXmlFacts(simulators[i]), bridgePath(machine.host), results);
        if (simulators[i].isMain) {
            judgeModule(readModuleFacts(simulators[i]), results);
            judgeSimConnectXml(offers[i], cfg, results);
        }
    }
    if (simulators.empty()) {
        CheckTopic(results, "Simulator")
            .warning("simulator-missing", "no folder of Microsoft Flight Simulator",
                     "Start the simulator once, as this user. If it runs in Wine without Steam, set APPDATA and "
                     "LOCALAPPDATA first (docs/registration.md).");
    }
    judgeSimConnectCfg(cfg, results);
}

} // namespace

CheckResults examine(const Machine& machine, const std::string& configPath) {
    CheckResults results;
    checkSystem(machine.host, results);
    checkProgram(machine, configPath, results);
    checkSimulators(machine, results);
    if (machine.simConnectDllNotice) {
        judgeSimConnectDll(machine.simConnectDllNotice(), results);
    }
    judgeRunning(readRunningFacts(machine.host), results);
    checkLogFolder(machine, results);
    judgeLog(readLogFacts(machine.host), results);
    judgeBoards(readBoardFacts(machine, configPath), results);
    return results;
}
