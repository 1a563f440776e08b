#pragma once

#include "companion/doctor/check_result.h"
#include "companion/doctor/simulator_folders.h"

#include <optional>
#include <string>
#include <vector>

/// Where a simulator has its packages, and what is there of the MobiFlight module.
struct ModuleFacts {
    std::string simulator;
    std::string userCfgPath;
    bool hasUserCfg = false;
    bool isUserCfgUtf16 = false;
    /// The folder that UserCfg.opt names, as it is written there.
    std::string namedPackages;
    std::string community;
    /// The folder that should have it.
    bool hasPackages = false;
    bool hasCommunity = false;
    /// The module's folder; empty when there is none.
    std::string folder;
    /// The module is one folder too deep.
    std::string nestedFolder;
    bool hasLayout = false;
    bool isLayoutReadable = false;
    /// Files that are missing or have another size than layout.json says.
    std::vector<std::string> wrongFiles;
    bool hasProgram = false;
    bool hasOldProgram = false;
    std::optional<std::string> version;
};

ModuleFacts readModuleFacts(const SimulatorFolder& simulator);

void judgeModule(const ModuleFacts& facts, CheckResults& results);
