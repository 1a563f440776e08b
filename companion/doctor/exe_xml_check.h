#pragma once

#include "companion/doctor/check_result.h"
#include "companion/doctor/machine.h"
#include "companion/doctor/simulator_folders.h"

#include <optional>
#include <string>
#include <vector>

/// A program in a list of add-ons.
struct AddonEntry {
    std::string name;
    std::string path;
    /// The configuration that its command line names.
    std::string configPath;
    bool isDisabled = false;
    bool isClosed = true;
    bool isInComment = false;
    /// Whether the files exist; none if that can't be said, for example of a relative path.
    std::optional<bool> pathExists;
    std::optional<bool> configExists;
};

/// What a simulator's EXE.xml says.
struct ExeXmlFacts {
    std::string simulator;
    std::string path;
    /// The simulator runs in Wine, where it can't start a Linux program.
    bool isInWine = false;
    bool exists = false;
    bool isReadable = true;
    bool isUtf16 = false;
    bool hasDocumentEnd = true;
    std::vector<AddonEntry> entries;
};

ExeXmlFacts readExeXmlFacts(const SimulatorFolder& simulator);

/// `bridgePath`: the bridge that should be registered.
void judgeExeXml(const ExeXmlFacts& facts, const std::string& bridgePath, CheckResults& results);
