#include "simulation/scenarios/scenario_inputs.h"

#include "simulation/rig/rig_controls.h"
#include "simulation/scenarios/scenario_boards.h"
#include "simulation/scenarios/scenario_player.h"
#include "simulation/simulator/simulator_controls.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace {

/// What a step does, and what of it can be used without the player.
struct Action {
    std::function<void(ScenarioPlayer&)> apply;
    ScenarioReports reports{};
    std::chrono::milliseconds duration{0};
};

/// A step's first word and the reader of what follows it.
struct Verb {
    std::string_view word;
    Action (*parse)(ScenarioLine& line, const Scenario& scenario);
};

/// The actions on a board, by the word that follows its name.
struct BoardVerb {
    std::string_view word;
    Action (*parse)(ScenarioLine& line, const Scenario& scenario, const std::string& board);
};

template <typename Verbs>
std::vector<std::string_view> wordsOf(const Verbs& verbs) {
    std::vector<std::string_view> words(std::size(verbs));
    std::transform(std::begin(verbs), std::end(verbs), words.begin(), [](const auto& verb) { return verb.word; });
    return words;
}

// Boards.

Action parsePlug(ScenarioLine& line, const Scenario& scenario) {
    const std::string name = needBoard(line, scenario, line.word("a board")).name;
    line.end();
    return {[name](ScenarioPlayer& player) { player.rig().plug(name); }};
}

Action parseUnplug(ScenarioLine& line, const Scenario& scenario) {
    const std::string name = needBoard(line, scenario, line.word("a board")).name;
    line.end();
    return {[name](ScenarioPlayer& player) { player.rig().unplug(name); }};
}

Action parseReplug(ScenarioLine& line, const Scenario& scenario) {
    const std::string name = needBoard(line, scenario, line.word("a board")).name;
    line.end();
    return {[name](ScenarioPlayer& player) { player.rig().replug(name); }};
}

/// A control's number, or its name as a "control" line gives it.
std::uint16_t parseControl(ScenarioLine& line, const Scenario& scenario) {
    const std::string word = line.word("a control");
    if (const auto number = wholeNumber(word, 0, 65535)) {
        return static_cast<std::uint16_t>(*number);
    }
    std::vector<std::string_view> names;
    for (const ScenarioControl& control : scenario.controls) {
        if (control.name == word) {
            return control.id;
        }
        names.emplace_back(control.name);
    }
    line.fail(unknownWord("control", word, names));
}

Action sendTimes(const std::string& board, const HidProtocol::HidEvent& event, long times, long everyMs) {
    const auto apply = [=](ScenarioPlayer& player) {
        for (long i = 0; i < times; ++i) {
            if (i > 0 && everyMs > 0) {
                player.wait(std::chrono::milliseconds(everyMs));
            }
            player.sendEvent(board, event);
        }
    };
    const HidProtocol::Report report = inputReport(event);
    return {apply, {board, {report.begin(), report.end()}, times, std::chrono::milliseconds(everyMs)}};
}

/// The options that every event of a control has after its own ones.
Action parseEventOptions(ScenarioLine& line, const std::string& board, HidProtocol::HidEvent event) {
    std::array<NumberOption, 5> options{{{"mode", 0, 255, 0},
                                         {"speed", 0, 255, 0},
                                         {"value", -128, 255, event.value},
                                         {"times", 1, 1000, 1},
                                         {"every", 0, 1000, 0}}};
    line.numberOptions(options);
    event.mode = static_cast<std::uint8_t>(options[0].value);
    event.speed = static_cast<std::uint8_t>(options[1].value);
    event.value = static_cast<std::int8_t>(options[2].value);
    return sendTimes(board, event, options[3].value, options[4].value);
}

Action parseButton(ScenarioLine& line, const Scenario& scenario, const std::string& board, std::int8_t value) {
    HidProtocol::HidEvent event;
    event.type = HidProtocol::eventTypeButton;
    event.controlId = parseControl(line, scenario);
    event.value = value;
    return parseEventOptions(line, board, event);
}

Action parsePress(ScenarioLine& line, const Scenario& scenario, const std::string& board) {
    return parseButton(line, scenario, board, 1);
}

Action parseHold(ScenarioLine& line, const Scenario& scenario, const std::string& board) {
    return parseButton(line, scenario, board, 2);
}

Action parseRelease(ScenarioLine& line, const Scenario& scenario, const std::string& board) {
    return parseButton(line, scenario, board, 0);
}

Action parseTurn(ScenarioLine& line, const Scenario& scenario, const std::string& board) {
    HidProtocol::HidEvent event;
    event.type = HidProtocol::eventTypeEncoder;
    event.controlId = parseControl(line, scenario);
    event.value = static_cast<std::int8_t>(line.number("count of detents, such as +1 or -3", -128, 127));
    return parseEventOptions(line, board, event);
}

Action parseEvent(ScenarioLine& line, const Scenario& scenario, const std::string& board) {
    HidProtocol::HidEvent event;
    event.type = static_cast<std::uint8_t>(line.number("event type", 0, 255));
    event.controlId = parseControl(line, scenario);
    return parseEventOptions(line, board, event);
}

Action parseNotice(ScenarioLine& line, const Scenario&, const std::string& board) {
    HidProtocol::HidEvent event;
    event.type = HidProtocol::eventTypeBoardNotice;
    return parseEventOptions(line, board, event);
}

Action parseRaw(ScenarioLine& line, const Scenario&, const std::string& board) {
    const std::vector<std::uint8_t> bytes = line.hexBytes();
    return {[board, bytes](ScenarioPlayer& player) { player.rig().board(board).sendRaw(bytes); },
            {board, bytes, 1, {}}};
}

/// The faults between board and bridge from now on. They replace earlier ones.
Action parseFault(ScenarioLine& line, const Scenario&, const std::string& board) {
    static constexpr std::array<std::string_view, 7> known{"none",         "refused",     "refused-writing", "reads",
                                                           "no-report-id", "fail-writes", "short-writes"};
    /// The system's code for a device that doesn't work.
    constexpr std::uint32_t writeError = 31;
    HidLinkFaults faults;
    do {
        switch (line.choice("fault", known)) {
        case 1:
            faults.refusedOpens = {{HidAccess::ReadWrite, HidMode::Overlapped},
                                   {HidAccess::ReadOnly, HidMode::Overlapped}};
            break;
        case 2:
            faults.refusedOpens = {{HidAccess::ReadWrite, HidMode::Overlapped},
                                   {HidAccess::ReadWrite, HidMode::Synchronous}};
            break;
        case 3:
            faults.readsFail = true;
            break;
        case 4:
            faults.readsLackReportId = true;
            break;
        case 5:
            faults.writeError = writeError;
            break;
        case 6:
            faults.writeCount = 31;
            break;
        default:
            break;
        }
    } while (!line.atEnd());
    return {[board, faults](ScenarioPlayer& player) { player.rig().setFaults(board, faults); }};
}

constexpr std::array<BoardVerb, 8> boardVerbs{{{"press", parsePress},
                                               {"hold", parseHold},
                                               {"release", parseRelease},
                                               {"turn", parseTurn},
                                               {"event", parseEvent},
                                               {"notice", parseNotice},
                                               {"raw", parseRaw},
                                               {"fault", parseFault}}};

// The bridge.

Action parseStart(ScenarioLine& line, const Scenario&) {
    line.end();
    return {[](ScenarioPlayer& player) { player.rig().startBridge(); }};
}

Action parseStop(ScenarioLine& line, const Scenario&) {
    line.end();
    return {[](ScenarioPlayer& player) { player.rig().bridge().requestStop(); }};
}

Action parseConnect(ScenarioLine& line, const Scenario&) {
    line.end();
    return {[](ScenarioPlayer& player) { player.connect(true); }};
}

Action parseSession(ScenarioLine& line, const Scenario&) {
    line.end();
    return {[](ScenarioPlayer& player) { player.connect(false); }};
}

Action parseConsole(ScenarioLine& line, const Scenario& scenario) {
    const std::string text = line.rest("what is typed");
    if (!scenario.consoleMode) {
        line.fail("the bridge has no console here: write \"console\" above the first step");
    }
    return {[text](ScenarioPlayer& player) { player.rig().bridge().typeLine(text); }};
}

// The simulator.

std::vector<std::string_view> controlWords() {
    std::vector<std::string_view> words;
    for (const SimulatorControl& control : simulatorControls()) {
        words.push_back(control.word);
    }
    return words;
}

/// A control as the simulator's console takes it: `> sim battery on`.
Action parseSim(ScenarioLine& line, const Scenario&) {
    const std::string word = line.word("a control of the simulator");
    const SimulatorControl* const control = findSimulatorControl(word);
    if (control == nullptr) {
        line.fail(unknownWord("control of the simulator", word, controlWords()));
    }
    const std::string argument = line.atEnd() ? "" : line.rest("its argument");
    const std::optional<SimulatorRequest> request = control->request(argument);
    if (!request) {
        line.fail("expected \"sim " + control->usage() + '"');
    }
    return {[request = *request](ScenarioPlayer& player) { applyControl(player.rig(), request); }};
}

// Time and words.

Action parseWait(ScenarioLine& line, const Scenario&) {
    const auto time = line.duration();
    line.end();
    return {[time](ScenarioPlayer& player) { player.wait(time); }, {}, time};
}

Action parsePause(ScenarioLine& line, const Scenario&) {
    const auto time = line.duration();
    line.end();
    return {[time](ScenarioPlayer& player) { player.pause(time); }, {}, time};
}

/// The words themselves are taken from the whole line; see `parseInput`.
Action parseSay(ScenarioLine& line, const Scenario&) {
    line.rest("some words");
    return {[](ScenarioPlayer&) {}};
}

constexpr std::string_view sayWord = "say ";

constexpr std::array<Verb, 12> verbs{{{"plug", parsePlug},
                                      {"unplug", parseUnplug},
                                      {"replug", parseReplug},
                                      {"start", parseStart},
                                      {"stop", parseStop},
                                      {"connect", parseConnect},
                                      {"session", parseSession},
                                      {"console", parseConsole},
                                      {"sim", parseSim},
                                      {"wait", parseWait},
                                      {"pause", parsePause},
                                      {"say", parseSay}}};

Action parseBoardAction(ScenarioLine& line, const Scenario& scenario, const std::string& board) {
    const auto words = wordsOf(boardVerbs);
    return boardVerbs[line.choice("thing that a board does", words)].parse(line, scenario, board);
}

bool isBoard(const Scenario& scenario, const std::string& word) {
    return std::any_of(scenario.boards.begin(), scenario.boards.end(),
                       [&word](const RigBoard& board) { return board.name == word; });
}

Action parseAction(ScenarioLine& line, const Scenario& scenario) {
    const std::string word = line.word("a step");
    if (isBoard(scenario, word)) {
        return parseBoardAction(line, scenario, word);
    }
    auto words = wordsOf(verbs);
    const auto found = std::find(words.begin(), words.end(), word);
    if (found == words.end()) {
        if (findSimulatorControl(word) != nullptr) {
            line.fail("\"" + word + "\" is a control of the simulator: write \"sim " + word + '"');
        }
        for (const RigBoard& board : scenario.boards) {
            words.emplace_back(board.name);
        }
        line.fail(unknownWord("step", word, words));
    }
    return verbs[static_cast<std::size_t>(found - words.begin())].parse(line, scenario);
}

} // namespace

ScenarioInput parseInput(ScenarioLine& line, const Scenario& scenario, std::size_t lineNumber) {
    ScenarioInput input;
    input.line = lineNumber;
    input.text = line.whole();
    input.text.erase(0, input.text.find_first_not_of("> \t"));
    if (input.text.starts_with(sayWord)) {
        input.remark = input.text.substr(sayWord.size());
    }
    Action action = parseAction(line, scenario);
    input.apply = std::move(action.apply);
    input.reports = std::move(action.reports);
    input.duration = action.duration;
    return input;
}
