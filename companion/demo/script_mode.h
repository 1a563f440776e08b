#pragma once

#include <ostream>
#include <string>
#include <vector>

/// Plays scenarios one after the other. True when all passed.
bool runScripts(const std::vector<std::string>& scripts, bool fast, std::ostream& screen);
