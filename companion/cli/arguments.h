#pragma once

#include <string>
#include <vector>

/// The program's arguments, its own name first, from those of `main`. On Windows in the system's code page, as paths
/// are everywhere; a path that the code page lacks is given by its short name, which the bridge can use, too.
std::vector<std::string> programArguments(int argc, const char* const* argv);
