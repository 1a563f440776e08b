#pragma once

#include "platform/platform.h"

#include <string>
#include <string_view>
#include <vector>

/// The folders of the simulators that Steam runs on Linux, each in a Wine prefix of its own. The bridge doesn't look
/// there by itself. Those that exist; none without a home folder.
std::vector<std::string> steamSimulatorFolders(const Host& host);

/// The folders of games that the text of Steam's libraryfolders.vdf names.
std::vector<std::string> steamLibraries(std::string_view text);
