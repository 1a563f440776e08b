#pragma once

#include "platform/platform.h"

/// The folder for the program's data: `machineFolder` when this process can write to the program's folder in it or make
/// one there, else the user's data folder: XDG_DATA_HOME where that is an absolute path, else .local/share in the home
/// folder. Empty when there is no home folder either. Only looks; makes nothing.
std::string dataFolder(const std::string& machineFolder, const Host& host);
