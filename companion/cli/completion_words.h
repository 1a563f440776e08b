#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

/// An option of a command, or of the program.
struct OptionWord {
    /// With its dashes.
    std::string name;
    std::string description;
    bool takesValue = false;
};

/// A command of the program.
struct CommandWord {
    std::string name;
    std::string description;
    std::vector<OptionWord> options;
};

/// What can be typed after the program's name. The first command has no name: its options are the program's own.
std::vector<CommandWord> completionWords(const CLI::App& program);
