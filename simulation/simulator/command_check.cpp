#include "simulation/simulator/command_check.h"

#include "simulation/simulator/event_facts.h"

#include <algorithm>
#include <vector>

namespace {

/// Blanks separate words; a reference in round brackets is one word, blanks included.
std::vector<std::string> commandWords(std::string_view command) {
    std::vector<std::string> words;
    std::size_t begin = 0;
    while ((begin = command.find_first_not_of(' ', begin)) != std::string_view::npos) {
        const bool isReference = command[begin] == '(';
        const std::size_t last = std::min(command.find(isReference ? ')' : ' ', begin), command.size());
        const std::size_t end = isReference ? std::min(last + 1, command.size()) : last;
        words.emplace_back(command.substr(begin, end - begin));
        begin = end;
    }
    return words;
}

/// Goes once through the words and keeps what the simulator's stack would contain.
class CommandCheck {
public:
    std::string run(const std::vector<std::string>& words) {
        for (const std::string& word : words) {
            if (!take(word)) {
                return fault;
            }
        }
        if (openBlocks > 0) {
            return "a block isn't closed";
        }
        return stackIsEmpty("the end") ? "" : fault;
    }

private:
    /// The unit of each value on the stack; empty for a plain number, which fits any unit.
    std::vector<std::string> units;
    int openBlocks = 0;
    bool blockJustEnded = false;
    std::string fault;

    bool fail(const std::string& words) {
        fault = words;
        return false;
    }

    bool take(const std::string& word) {
        const bool mayBeElse = blockJustEnded;
        blockJustEnded = false;
        if (word.starts_with('(')) {
            return takeReference(word);
        }
        if (word == "if{") {
            ++openBlocks;
            return pop("bool", word) && stackIsEmpty(word);
        }
        if (word == "els{") {
            ++openBlocks;
            return mayBeElse || fail("els{ without an if{ block before it");
        }
        if (word == "}") {
            blockJustEnded = true;
            return (--openBlocks >= 0 || fail("} without a block")) && stackIsEmpty(word);
        }
        return takeOperation(word);
    }

    bool takeOperation(const std::string& word) {
        if (word.find_first_not_of("0123456789") == std::string::npos) {
            units.emplace_back();
            return true;
        }
        if (word == "near" || word == "dnor" || word == "!") {
            return !units.empty() || fail(word + " has no value");
        }
        if (word == "+" || word == "-") {
            if (units.size() < 2) {
                return fail(word + " has less than two values");
            }
            const std::string upper = units.back();
            units.pop_back();
            units.back() = units.back().empty() ? upper : units.back();
            return true;
        }
        return fail("unknown word " + word);
    }

    bool takeReference(const std::string& word) {
        if (!word.ends_with(')')) {
            return fail("a bracket isn't closed: " + word);
        }
        const auto nameBehind = [&](std::string_view begin) {
            return word.substr(begin.size(), word.size() - begin.size() - 1);
        };
        if (word.starts_with("(>K:")) {
            const EventFacts::KeyEvent* event = EventFacts::keyEvent(nameBehind("(>K:"));
            return event == nullptr ? fail("unknown event " + word)
                                    : (event->argument.empty() || pop(event->argument, word)) && stackIsEmpty(word);
        }
        if (word.starts_with("(>H:")) {
            return EventFacts::displayEvent(nameBehind("(>H:")) == nullptr ? fail("unknown event " + word)
                                                                           : stackIsEmpty(word);
        }
        return word.starts_with("(A:") ? push(nameBehind("(A:"), word) : fail("unknown reference " + word);
    }

    bool push(const std::string& nameAndUnit, const std::string& word) {
        const std::size_t comma = nameAndUnit.find(", ");
        const EventFacts::Variable* variable = EventFacts::variable(nameAndUnit.substr(0, comma));
        if (variable == nullptr || comma == std::string::npos) {
            return fail("unknown variable " + word);
        }
        units.push_back(nameAndUnit.substr(comma + 2));
        return units.back() == variable->unit || fail("not in " + std::string(variable->unit) + ": " + word);
    }

    bool pop(std::string_view unit, const std::string& word) {
        if (units.empty()) {
            return fail(word + " lacks its value in " + std::string(unit));
        }
        const std::string given = units.back();
        units.pop_back();
        return given.empty() || given == unit || fail(word + " takes " + std::string(unit) + ", not " + given);
    }

    bool stackIsEmpty(const std::string& word) { return units.empty() || fail("a value is left over at " + word); }
};

} // namespace

std::string faultInCommand(std::string_view command) {
    return CommandCheck().run(commandWords(command));
}
