#pragma once

#include "platform/platform.h"

#include <optional>
#include <string>
#include <vector>

/// A folder in which a simulator keeps its user's files.
struct SimulatorFolder {
    /// Such as "MSFS 2024 (Store)".
    std::string name;
    std::string path;
    /// The simulator reads its settings and packages here. False for a second folder that may only have an EXE.xml.
    bool isMain = true;
    bool is2024 = false;
    /// In a prefix of Wine or Proton.
    bool isInWine = false;
};

/// The folders that exist, in the order in which the bridge registers itself in them. If it finds none, those of Steam
/// on Linux.
std::vector<SimulatorFolder> simulatorFolders(const Host& host);

/// The path of `name`, which may have several parts, below a folder, in whatever letter case it has there: in a prefix
/// of Wine, files keep the case with which they were made. As given where it doesn't exist.
std::string pathInAnyCase(const std::string& folder, const std::string& name);

/// A path from one of the simulator's files as a path of this system. On Linux that is the place in the Wine prefix
/// that the simulator's folder is in. None if there is no such place or the path isn't absolute.
std::optional<std::string> ownPath(const std::string& path, const SimulatorFolder& simulator);
