#include "companion/doctor/doctor.h"

#include "companion/doctor/board_check.h"
#include "companion/doctor/exe_xml_check.h"
#include "companion/doctor/log_check.h"
#include "companion/doctor/module_check.h"
#include "companion/doctor/program_check.h"
#include "companion/doctor/running_check.h"
#include "companion/doctor/simconnect_check.h"
#include "companion/doctor/simulator_folders.h"

namespace {

void checkSimulator(const SimulatorFolder& simulator, const std::string& bridge, const SimConnectEndpoints& endpoints,
                    CheckResults& results) {
    judgeExeXml(readExeXmlFacts(simulator), bridge, results);
    if (simulator.isMain) {
        judgeModule(readModuleFacts(simulator), results);
        judgeSimConnectXml(readSimConnectXmlFacts(simulator), endpoints, results);
    }
}

void checkSimulators(const Machine& machine, CheckResults& results) {
    const SimConnectCfgFacts cfg = readSimConnectCfgFacts(machine);
    const std::vector<SimulatorFolder> simulators = simulatorFolders(machine.host);
    for (const SimulatorFolder& simulator : simulators) {
        checkSimulator(simulator, bridgePath(machine), cfg.endpoints, results);
    }
    if (simulators.empty()) {
        CheckTopic(results, "Simulator")
            .warning("simulator-missing", "no folder of Microsoft Flight Simulator",
                     "Start the simulator once, as this user. On Linux, set APPDATA and LOCALAPPDATA first "
                     "(docs/registration.md).");
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
