#pragma once

#include "platform/platform.h"

#include <string>
#include <string_view>

/// Where the bridge should be: beside this program.
std::string bridgePath(const Host& host);

/// Whether a process is one of the bridge, also one for Windows in Wine.
bool isBridgeProcess(std::string_view name);

/// Whether a process has that program's name, with or without ".exe".
bool isProcessOf(std::string_view name, std::string_view program);
