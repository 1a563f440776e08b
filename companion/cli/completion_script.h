#pragma once

#include "companion/cli/completion_words.h"

#include <string>
#include <vector>

/// The script with which the shell of this name completes `vantrel`'s arguments: bash, zsh or fish. Empty for another
/// shell.
std::string completionScript(const std::string& shell, const std::vector<CommandWord>& words);
