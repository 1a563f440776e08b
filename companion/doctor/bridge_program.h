#pragma once

#include "platform/platform.h"

#include <string>
#include <string_view>

/// Where the bridge should be: beside this program.
std::string bridgePath(const Host& host);

/// Whether a process is one of the bridge, also one for Windows in Wine.
bool isBridgeProcess(std::string_view name);

/// The same of the simulator.
bool isSimulatorProcess(std::string_view name);
