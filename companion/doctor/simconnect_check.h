#pragma once

#include "companion/doctor/check_result.h"
#include "companion/doctor/machine.h"
#include "companion/doctor/simulator_folders.h"
#include "wire/simconnect_cfg.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// The client's side: which SimConnect.cfg applies and what it says.
struct SimConnectCfgFacts {
    /// Empty when there is none.
    std::string path;
    SimConnectResult result = simConnectOk;
    /// Empty when the file can't be used.
    SimConnectEndpoints endpoints;
    /// Writes one that leads to the simulator, if it is known how.
    Repair writing;
};

/// A way to reach the simulator, of its SimConnect.xml.
struct SimConnectEntry {
    std::string protocol;
    std::string port;
    bool isDisabled = false;
};

/// The simulator's side.
struct SimConnectXmlFacts {
    std::string simulator;
    std::string path;
    bool exists = false;
    bool isWhole = false;
    /// The simulator runs in Wine, where it can't listen on a port below 1024.
    bool isInWine = false;
    std::vector<SimConnectEntry> entries;
};

SimConnectXmlFacts readSimConnectXmlFacts(const SimulatorFolder& simulator);
SimConnectCfgFacts readSimConnectCfgFacts(const Machine& machine, const std::vector<SimConnectXmlFacts>& simulators);

/// The text with which the bridge reaches the simulators of this machine by TCP; empty unless one port leads to all
/// that offer one.
std::string simConnectCfgText(const std::vector<SimConnectXmlFacts>& simulators);

/// `notice`: as in Machine.
void judgeSimConnectDll(const std::string& notice, CheckResults& results);
void judgeSimConnectCfg(const SimConnectCfgFacts& facts, CheckResults& results);

/// Judges the file itself, and whether it offers one of the client's endpoints on this machine.
void judgeSimConnectXml(const SimConnectXmlFacts& facts, const SimConnectCfgFacts& client, CheckResults& results);
