#include "companion/cli/completion_words.h"

#include <CLI/CLI.hpp>

namespace {

CommandWord wordsOf(const CLI::App& command, const std::string& name) {
    CommandWord words{name, command.get_description(), {}};
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& longName : option->get_lnames()) {
            words.options.push_back({"--" + longName, option->get_description(), option->get_expected_max() > 0});
        }
    }
    return words;
}

} // namespace

std::vector<CommandWord> completionWords(const CLI::App& program) {
    std::vector<CommandWord> words{wordsOf(program, "")};
    for (const CLI::App* command : program.get_subcommands([](const CLI::App*) { return true; })) {
        words.push_back(wordsOf(*command, command->get_name()));
    }
    return words;
}
