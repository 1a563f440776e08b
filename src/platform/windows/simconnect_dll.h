#pragma once

#include "platform/platform.h"

#include <optional>
#include <string>

/// The simulator's client library from a DLL of that name in the program's own folder or the system's: never from the
/// working folder, which others may be able to write to. Stays loaded until the process ends. None, with the reason in
/// `error`, when there is no such DLL, it can't be loaded, or it lacks an operation.
std::optional<SimConnectLibrary> loadSimConnectDll(const std::string& fileName, std::string& error);
