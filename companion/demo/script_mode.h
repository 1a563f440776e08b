#pragma once

#include "companion/demo/play_outcome.h"

#include <ostream>
#include <string>
#include <vector>

/// Plays scenarios one after the other; one with mistakes counts as failed. NotPlayed, with the reason in `error`, if
/// any of the files can't be read.
PlayOutcome runScripts(const std::vector<std::string>& scripts, bool fast, std::ostream& screen, std::string& error);
