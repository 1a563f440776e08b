#include "companion/check/rpn_check.h"

#include "companion/catalogue/event_catalogue.h"
#include "simulation/scenarios/nearest_word.h"
#include "text/ascii.h"
#include "text/module_commands.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace {

constexpr std::size_t longestCommand = ModuleCommands::longest - ModuleCommands::runCommand.size();

bool isWordEnd(char byte) {
    return isSpace(byte) || byte == '(' || byte == ')' || byte == '{' || byte == '}' || byte == '\'';
}

/// "K:AP_MASTER" or "H:NAME" without its brackets and arrow.
bool isBareEvent(std::string_view word) {
    return word.size() > 2 && word[1] == ':' && (toUpper(word[0]) == 'K' || toUpper(word[0]) == 'H');
}

/// "2:NAME" in "(>K:2:NAME)" says how many values the event takes.
std::string_view withoutCount(std::string_view name) {
    const std::size_t colon = name.find(':');
    const bool isCount = colon != std::string_view::npos && colon > 0 &&
                         name.substr(0, colon).find_first_not_of("0123456789") == std::string_view::npos;
    return isCount ? name.substr(colon + 1) : name;
}

/// The operators of the language; numbers, registers, labels and what is in brackets are not among them.
constexpr std::array<std::string_view, 78> operators{
    "+",    "-",    "*",    "/",    "%",    "div",  "++",   "--",   "/-/",  "neg",  "==",   "!=",   ">",
    "<",    ">=",   "<=",   "?",    "&&",   "and",  "||",   "or",   "!",    "not",  "&",    "|",    "^",
    "<<",   ">>",   "~",    "abs",  "int",  "flr",  "ceil", "near", "sqr",  "sqrt", "exp",  "ln",   "lg",
    "eps",  "sin",  "cos",  "tg",   "ctg",  "asin", "acos", "atg",  "dgrd", "rddg", "dnor", "d360", "rdeg",
    "rnor", "min",  "max",  "pow",  "atg2", "log",  "rng",  "pi",   "lc",   "uc",   "cap",  "chr",  "ord",
    "scat", "scmp", "scmi", "schr", "sstr", "symb", "ssub", "d",    "p",    "r",    "c",    "b",    "case",
};

bool isDigits(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

bool isNumber(std::string_view word) {
    if (word.starts_with("0x") || word.starts_with("0X")) {
        return word.size() > 2 && word.find_first_not_of("0123456789abcdefABCDEF", 2) == std::string_view::npos;
    }
    word.remove_prefix(word.starts_with('-') || word.starts_with('+') ? 1 : 0);
    const std::size_t point = std::min(word.find('.'), word.size());
    const std::string_view fraction = word.substr(std::min(point + 1, word.size()));
    return (isDigits(word.substr(0, point)) && (fraction.empty() || isDigits(fraction))) ||
           (point == 0 && isDigits(fraction));
}

/// "s0", "sp12", "l3", ":1", "g1".
bool isNumberedWord(std::string_view word) {
    constexpr std::array<std::string_view, 5> beginnings{"sp", "s", "l", ":", "g"};
    return std::ranges::any_of(beginnings, [word](std::string_view beginning) {
        return word.starts_with(beginning) && isDigits(word.substr(beginning.size()));
    });
}

bool isKnownWord(std::string_view word) {
    const std::string lower = lowerCased(word);
    return std::ranges::find(operators, lower) != operators.end() || isNumber(word) || isNumberedWord(lower) ||
           lower == "quit" || lower == "true" || lower == "false";
}

/// Reads a command once from left to right.
class CommandReader {
public:
    explicit CommandReader(std::string_view command) : command(command) {}

    std::vector<CommandRemark> run() {
        while (at < command.size() && remarks.size() < mostRemarks) {
            readNext();
        }
        if (!openBraces.empty() && at == command.size()) {
            warn(openBraces.back(), "unbalanced-brace", "this { is never closed", "Add a }");
        }
        return std::move(remarks);
    }

private:
    /// More than anyone reads about one command.
    static constexpr std::size_t mostRemarks = 20;

    std::string_view command;
    std::size_t at = 0;
    std::vector<std::size_t> openBraces;
    std::vector<CommandRemark> remarks;

    void add(std::size_t offset, Severity severity, const char* code, std::string message, std::string hint) {
        remarks.push_back({offset, severity, code, std::move(message), std::move(hint)});
    }

    void warn(std::size_t offset, const char* code, std::string message, std::string hint) {
        add(offset, Severity::Warning, code, std::move(message), std::move(hint));
    }

    void readNext() {
        const char byte = command[at];
        if (byte == '(') {
            readReference();
        } else if (byte == '\'') {
            readText();
        } else if (byte == '{' || byte == '}' || byte == ')') {
            readClosing(byte);
        } else if (isSpace(byte)) {
            ++at;
        } else {
            readWord();
        }
    }

    void readReference() {
        const std::size_t begin = at;
        const std::size_t end = command.find_first_of("()", begin + 1);
        if (end == std::string_view::npos || command[end] == '(') {
            warn(begin, "unbalanced-bracket", "this ( is never closed", "Add a )");
            at = std::min(end, command.size());
            return;
        }
        checkReference(begin, command.substr(begin + 1, end - begin - 1));
        at = end + 1;
    }

    void checkReference(std::size_t begin, std::string_view reference) {
        if (reference.empty() || isSpace(reference.front()) || isSpace(reference.back())) {
            warn(begin, "blank-in-brackets", "the simulator wants no space after ( or before )", "Remove the space");
        } else if (reference.starts_with('>')) {
            checkWrite(begin + 2, reference.substr(1));
        } else if (isBareEvent(reference)) {
            warn(begin + 1, "event-without-arrow", "an event is fired by (>K:...) or (>H:...)",
                 "Write (>" + std::string(reference) + ")");
        }
    }

    void checkWrite(std::size_t offset, std::string_view target) {
        target = trimmed(target.substr(0, target.find(',')));
        if (!isBareEvent(target)) {
            return;
        }
        const std::string name = std::string(1, toUpper(target[0])) + ':' + std::string(withoutCount(target.substr(2)));
        const EventCatalogue& catalogue = EventCatalogue::instance();
        if (catalogue.find(name) != nullptr) {
            return;
        }
        const std::string nearest = catalogue.nearest(name);
        // Displays of add-on aircraft have events that no list has, so only a near name makes an H-event suspect.
        if (name.starts_with("K:") || !nearest.empty()) {
            add(offset, Severity::Hint, "unknown-event", "the catalogue has no event " + name,
                nearest.empty() ? "The simulator ignores unknown events without a word"
                                : "Did you mean " + nearest + "?");
        }
    }

    void readText() {
        const std::size_t end = command.find('\'', at + 1);
        if (end == std::string_view::npos) {
            warn(at, "unbalanced-quote", "this ' is never closed", "Add a '");
            at = command.size();
            return;
        }
        at = end + 1;
    }

    void readClosing(char byte) {
        if (byte == ')') {
            warn(at, "unbalanced-bracket", "this ) closes nothing", "Remove it");
        } else if (byte == '{') {
            warn(at, "brace-alone", "a { belongs to the word before it", "Write if{ or els{ without a space");
            openBraces.push_back(at);
        } else if (openBraces.empty()) {
            warn(at, "unbalanced-brace", "this } closes nothing", "Remove it");
        } else {
            openBraces.pop_back();
        }
        ++at;
    }

    static std::string wordHint(std::string_view word) {
        if (word == "if" || word == "els") {
            return "Write " + std::string(word) + "{ without a space";
        }
        const std::optional<std::string_view> nearest = nearestWord(word, operators);
        return nearest ? "Did you mean " + std::string(*nearest) + "?" : "Correct or remove it";
    }

    void readWord() {
        const std::size_t begin = at;
        at = static_cast<std::size_t>(
            std::find_if(command.begin() + static_cast<std::ptrdiff_t>(at), command.end(), isWordEnd) -
            command.begin());
        const std::string_view word = command.substr(begin, at - begin);
        if (at < command.size() && command[at] == '{' && (word == "if" || word == "els")) {
            openBraces.push_back(at);
            ++at;
        } else if (isBareEvent(word) || isBareEvent(word.substr(1))) {
            warn(begin, "event-without-brackets", "the simulator ignores this word", "An event is written (>K:NAME)");
        } else if (!isKnownWord(word)) {
            warn(begin, "unknown-word",
                 "the simulator doesn't know the word \"" + std::string(word) + "\" and skips it", wordHint(word));
        }
    }
};

} // namespace

std::vector<CommandRemark> checkCommand(std::string_view command) {
    std::vector<CommandRemark> remarks = CommandReader(command).run();
    if (command.size() > longestCommand) {
        remarks.push_back({longestCommand, Severity::Warning, "command-too-long",
                           "the command has " + std::to_string(command.size()) + " bytes; it is cut here",
                           "Shorten it to " + std::to_string(longestCommand)});
    }
    return remarks;
}
