#pragma once

#include "platform/platform.h"

#include <string>
#include <vector>

/// The folder of the running executable; empty when the system doesn't give it.
std::string exeDirectory(const Host& host);

/// The folder of per-machine data; empty when there is none.
std::string commonAppDataDirectory(const Host& host);

/// Where the log goes: the per-machine folder, or the executable's in console mode and when there is no such folder.
std::string logDirectory(bool consoleMode, const std::string& commonAppData, const std::string& exeDir);

/// The configuration file beside the executable if it exists, else the per-machine one, which may not exist. Throws
/// as FileSystem::exists does when the file system can't say.
std::string defaultConfigPath(const Host& host);

/// The places where the search looks, in its order.
std::vector<std::string> configCandidates(const Host& host);

/// The file beside the log that gets a line about a crash of that program.
std::string crashLinePath(const Host& host, bool consoleMode, const std::string& program);
