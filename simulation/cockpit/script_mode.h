#pragma once

#include <ostream>
#include <string>
#include <vector>

/// Plays scenarios one after the other. Returns the program's exit code: 0 when all passed.
int runScripts(const std::vector<std::string>& scripts, bool fast, std::ostream& screen);
