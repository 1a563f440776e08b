#include "simulation/scenarios/scenario_expectations.h"

#include "simulation/rig/stream_texts.h"

#include <algorithm>
#include <array>
#include <limits>

namespace {

constexpr long highestCount = 1000000;

struct Count {
    std::size_t least = 1;
    std::size_t most = 1;
};

std::optional<std::size_t> countNumber(std::string_view text) {
    const auto number = wholeNumber(text, 0, highestCount);
    return number ? std::optional(static_cast<std::size_t>(*number)) : std::nullopt;
}

/// "x3", "x2+" or "x0..1"; none for any other word.
std::optional<Count> parseCount(std::string_view word) {
    if (!word.starts_with('x')) {
        return std::nullopt;
    }
    word.remove_prefix(1);
    if (word.ends_with('+')) {
        const auto least = countNumber(word.substr(0, word.size() - 1));
        return least ? std::optional(Count{*least, std::numeric_limits<std::size_t>::max()}) : std::nullopt;
    }
    const std::size_t dots = word.find("..");
    const auto least = countNumber(word.substr(0, dots));
    const auto most = dots == std::string_view::npos ? least : countNumber(word.substr(dots + 2));
    return least && most && *least <= *most ? std::optional(Count{*least, *most}) : std::nullopt;
}

/// Takes a count from the end of the line, if there is one.
Count takeCount(ScenarioLine& line) {
    const auto count = parseCount(line.lastWordOfAll());
    if (count) {
        line.dropLastWord();
    }
    return count.value_or(Count{});
}

std::string parseLed(ScenarioLine& line) {
    static constexpr std::array<std::string_view, 4> effects{"none", "steady", "breathe", "flash"};
    LedCommand command;
    command.effect = static_cast<std::uint8_t>(line.choice("effect", effects));
    if (command.effect == 1) {
        command.brightness = static_cast<std::uint8_t>(line.number("brightness", 0, 255));
    } else if (command.effect > 1) {
        std::array<NumberOption, 3> options{{{"count", 0, 255, 0}, {"period", 0, 65535, 0}, {"level", 0, 255, 0}}};
        line.numberOptions(options);
        command.count = static_cast<std::uint8_t>(options[0].value);
        command.periodMs = static_cast<std::uint16_t>(options[1].value);
        command.level = static_cast<std::uint8_t>(options[2].value);
    }
    line.end();
    return "led " + ledText(command);
}

std::string parseStatus(ScenarioLine& line) {
    static constexpr std::array<std::string_view, 2> states{"disconnected", "connected"};
    const std::size_t state = line.choice("simulator status", states);
    line.end();
    return "status " + std::string(states[state]);
}

std::string parseBoardText(ScenarioLine& line) {
    static constexpr std::array<std::string_view, 4> kinds{"led", "status", "bootsel", "output"};
    switch (line.choice("board report", kinds)) {
    case 0:
        return parseLed(line);
    case 1:
        return parseStatus(line);
    case 2:
        line.end();
        return "bootsel";
    default:
        return "output " + line.rest("the report's bytes");
    }
}

std::string parseSimText(ScenarioLine& line, const Scenario& scenario) {
    static constexpr std::array<std::string_view, 10> kinds{"rpn",        "code",      "event",     "command", "opened",
                                                            "subscribed", "exception", "unchanged", "closed",  "dummy"};
    const std::size_t kind = line.choice("thing that the simulator receives", kinds);
    if (kinds[kind] == "dummy" && !scenario.watch.dummies) {
        line.fail("dummies aren't shown here: write \"watch dummies\" above the first step");
    }
    if (kinds[kind] == "closed" || kinds[kind] == "dummy") {
        line.end();
        return std::string(kinds[kind]);
    }
    return std::string(kinds[kind]) + ' ' + line.rest("its text");
}

std::string parseLogText(ScenarioLine& line, const Scenario& scenario) {
    static constexpr std::array<std::string_view, 4> levels{"WARN", "ERROR", "INFO", "DEBUG"};
    const std::size_t level = line.choice("log level", levels);
    const bool shown = level < 2 || !(level == 2 ? scenario.watch.infoTexts : scenario.watch.debugTexts).empty();
    if (!shown) {
        line.fail(std::string(levels[level]) + " lines aren't shown here: write \"watch log " +
                  (level == 2 ? "info" : "debug") + "\" above the first step");
    }
    return std::string(levels[level]) + ' ' + line.rest("the line");
}

std::string parseExitText(ScenarioLine& line) {
    const long code = line.number("exit code", 0, 255);
    line.end();
    return std::to_string(code);
}

std::string parseText(ScenarioLine& line, const Scenario& scenario, const std::string& stream) {
    if (stream == "sim") {
        return parseSimText(line, scenario);
    }
    if (stream == "log") {
        return parseLogText(line, scenario);
    }
    if (stream == "exit") {
        return parseExitText(line);
    }
    return parseBoardText(line);
}

void needStream(ScenarioLine& line, const Scenario& scenario, const std::string& stream) {
    std::vector<std::string_view> known{"sim", "log", "exit", "nothing"};
    for (const RigBoard& board : scenario.boards) {
        known.emplace_back(board.name);
    }
    if (std::find(known.begin(), known.end(), stream) == known.end()) {
        line.fail(unknownWord("stream", stream, known));
    }
}

} // namespace

ScenarioExpectation parseExpectation(ScenarioLine& line, const Scenario& scenario, std::size_t lineNumber) {
    ScenarioExpectation expectation;
    expectation.line = lineNumber;
    const Count count = takeCount(line);
    expectation.stream = line.word("what comes: sim, log, exit, nothing or a board");
    needStream(line, scenario, expectation.stream);
    expectation.text = parseText(line, scenario, expectation.stream);
    expectation.least = count.least;
    expectation.most = count.most;
    return expectation;
}
