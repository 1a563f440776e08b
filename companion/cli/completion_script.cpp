#include "companion/cli/completion_script.h"

#include <functional>
#include <map>
#include <string_view>

namespace {

/// With a backslash before each of these characters.
std::string escaped(const std::string& text, std::string_view characters) {
    std::string result;
    for (const char c : text) {
        result += characters.find(c) == std::string_view::npos ? "" : "\\";
        result += c;
    }
    return result;
}

/// Within single quotes, which zsh ends for a quote.
std::string quotedForZsh(const std::string& text) {
    std::string result;
    for (const char c : text) {
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return "'" + result + "'";
}

std::string quotedForFish(const std::string& text) {
    return "'" + escaped(text, "'\\") + "'";
}

std::string optionNames(const CommandWord& command) {
    std::string names;
    for (const OptionWord& option : command.options) {
        names += ' ' + option.name;
    }
    return names;
}

std::string bashScript(const std::vector<CommandWord>& words) {
    std::string names;
    std::string cases;
    for (const CommandWord& command : words) {
        names += command.name + ' ';
        cases += "        '" + command.name + "') words='" + optionNames(command) + "' ;;\n";
    }
    return "_vantrel() {\n"
           "    local command='' words\n"
           "    [ \"$COMP_CWORD\" -eq 1 ] || command=${COMP_WORDS[1]}\n"
           "    case $command in\n" +
           cases +
           "        *) words='' ;;\n"
           "    esac\n"
           "    [ -n \"$command\" ] || words+=' " +
           names +
           "'\n"
           "    mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"${COMP_WORDS[COMP_CWORD]}\")\n"
           "}\n"
           "complete -o default -F _vantrel vantrel\n";
}

/// An option as _arguments takes it.
std::string zshOption(const OptionWord& option) {
    return " " + quotedForZsh(option.name + '[' + escaped(option.description, "[]:\\") + ']' +
                              (option.takesValue ? ":value:_files" : ""));
}

std::string zshScript(const std::vector<CommandWord>& words) {
    std::string names;
    std::string cases;
    for (const CommandWord& command : words) {
        if (!command.name.empty()) {
            names += "        " + quotedForZsh(command.name + ':' + escaped(command.description, ":\\")) + '\n';
        }
        cases += "    '" + command.name + "') _arguments";
        for (const OptionWord& option : command.options) {
            cases += zshOption(option);
        }
        cases += " '*:file:_files' ;;\n";
    }
    return "#compdef vantrel\n"
           "local command=''\n"
           "if (( CURRENT == 2 )); then\n"
           "    local -a commands=(\n" +
           names +
           "    )\n"
           "    _describe command commands\n"
           "else\n"
           "    command=$words[2]\n"
           "    shift words\n"
           "    (( CURRENT-- ))\n"
           "fi\n"
           "case $command in\n" +
           cases + "esac\n";
}

std::string fishScript(const std::vector<CommandWord>& words) {
    std::string lines;
    for (const CommandWord& command : words) {
        const std::string place =
            command.name.empty() ? "__fish_use_subcommand" : "'__fish_seen_subcommand_from " + command.name + "'";
        if (!command.name.empty()) {
            lines += "complete -c vantrel -n __fish_use_subcommand -f -a " + command.name + " -d " +
                     quotedForFish(command.description) + '\n';
        }
        for (const OptionWord& option : command.options) {
            lines += "complete -c vantrel -n " + place + " -l " + option.name.substr(2) +
                     (option.takesValue ? " -r -d " : " -d ") + quotedForFish(option.description) + '\n';
        }
    }
    return lines;
}

} // namespace

std::string completionScript(const std::string& shell, const std::vector<CommandWord>& words) {
    const std::map<std::string, std::function<std::string(const std::vector<CommandWord>&)>> scripts{
        {"bash", bashScript}, {"zsh", zshScript}, {"fish", fishScript}};
    const auto found = scripts.find(shell);
    return found == scripts.end() ? std::string() : found->second(words);
}
