#pragma once

#include <string>
#include <vector>

/// Where a client looks for its SimConnect.cfg: beside its executable, then in the user's home folder. Without a
/// separator at the end; empty for a folder that the system doesn't give.
std::vector<std::string> simConnectCfgFolders();
