#pragma once

#include "platform/platform.h"

#include <optional>
#include <string>

/// The simulator's client library from a DLL of that name in the program's own folder or the system's: never from the
/// working folder, which may be anybody's. Stays loaded to the end of the process. None when there is no such DLL or it
/// lacks an operation.
std::optional<SimConnectLibrary> loadSimConnectDll(const std::string& fileName);
