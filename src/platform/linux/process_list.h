#pragma once

#include <functional>
#include <string>
#include <string_view>

/// The last component of a program's path, as a process shows it in its first argument. Under Wine and Proton that is a
/// Windows path.
std::string_view programNameIn(std::string_view firstArgument);

/// Calls `visit` with the program name of each process that `procFolder` lists, until it returns true. Returns whether
/// it did. Kernel threads and ended processes have no name and are skipped.
bool findProcessIn(const std::string& procFolder, const std::function<bool(std::string_view name)>& visit);
