#include "simulation/scenarios/scenario_inputs.h"

#include "simulation/scenarios/scenario_boards.h"
#include "simulation/scenarios/scenario_player.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace {

using Action = std::function<void(ScenarioPlayer&)>;

/// A step's first word and the reader of what follows it.
struct Verb {
    std::string_view word;
    Action (*parse)(ScenarioLine& line, const Scenario& scenario);
};

/// What is done with a board, by the word behind its name.
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
    return [name](ScenarioPlayer& player) { player.rig().plug(name); };
}

Action parseUnplug(ScenarioLine& line, const Scenario& scenario) {
    const std::string name = needBoard(line, scenario, line.word("a board")).name;
    line.end();
    return [name](ScenarioPlayer& player) { player.rig().unplug(name); };
}

Action parseReplug(ScenarioLine& line, const Scenario& scenario) {
    const std::string name = needBoard(line, scenario, line.word("a board")).name;
    line.end();
    return [name](ScenarioPlayer& player) { player.rig().replug(name); };
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
    return [=](ScenarioPlayer& player) {
        for (long i = 0; i < times; ++i) {
            if (i > 0 && everyMs > 0) {
                player.wait(std::chrono::milliseconds(everyMs));
            }
            player.sendEvent(board, event);
        }
    };
}

/// The options that every event of a control has behind those of its own.
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
    return [board, bytes = line.hexBytes()](ScenarioPlayer& player) { player.rig().board(board).sendRaw(bytes); };
}

/// What goes wrong between board and bridge from now on, in place of what was said before.
Action parseFault(ScenarioLine& line, const Scenario&, const std::string& board) {
    static constexpr std::array<std::string_view, 7> known{"none",         "refused",     "refused-writing", "reads",
                                                           "no-report-id", "fail-writes", "short-writes"};
    /// As a system gives it when a device doesn't work.
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
    return [board, faults](ScenarioPlayer& player) { player.rig().setFaults(board, faults); };
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
    return [](ScenarioPlayer& player) { player.rig().startBridge(); };
}

Action parseStop(ScenarioLine& line, const Scenario&) {
    line.end();
    return [](ScenarioPlayer& player) { player.rig().bridge().requestStop(); };
}

Action parseConnect(ScenarioLine& line, const Scenario&) {
    line.end();
    return [](ScenarioPlayer& player) { player.connect(true); };
}

Action parseSession(ScenarioLine& line, const Scenario&) {
    line.end();
    return [](ScenarioPlayer& player) { player.connect(false); };
}

Action parseConsole(ScenarioLine& line, const Scenario& scenario) {
    const std::string text = line.rest("what is typed");
    if (!scenario.consoleMode) {
        line.fail("the bridge has no console here: write \"console\" above the first step");
    }
    return [text](ScenarioPlayer& player) { player.rig().bridge().typeLine(text); };
}

// The simulator.

/// `call` gets the simulator and the switch that stands behind the word.
template <typename Call>
Action switchOf(ScenarioLine& line, Call call) {
    const bool on = line.onOff();
    line.end();
    return [call, on](ScenarioPlayer& player) { call(player.rig().simulator(), on); };
}

Action parseSimSwitch(ScenarioLine& line, std::string_view word) {
    if (word == "refuse") {
        const bool on = line.onOff();
        line.end();
        return [on](ScenarioPlayer& player) { player.rig().refuseSessions(on); };
    }
    if (word == "hangup") {
        return switchOf(line, [](VirtualSimulator& simulator, bool on) { simulator.hangUpOnOpens(on); });
    }
    if (word == "stall") {
        return switchOf(line, [](VirtualSimulator& simulator, bool on) { simulator.stopReading(on); });
    }
    return switchOf(line, [](VirtualSimulator& simulator, bool on) { simulator.sendByteByByte(on); });
}

Action parseSimEvent(ScenarioLine& line, std::string_view word) {
    line.end();
    if (word == "start") {
        return [](ScenarioPlayer& player) { player.rig().startSimulator(); };
    }
    if (word == "vanish") {
        return [](ScenarioPlayer& player) { player.rig().hideProcess(); };
    }
    if (word == "quit") {
        return [](ScenarioPlayer& player) { player.rig().quitSimulator(); };
    }
    if (word == "die") {
        return [](ScenarioPlayer& player) { player.rig().crashSimulator(); };
    }
    if (word == "drop") {
        return [](ScenarioPlayer& player) { player.rig().simulator().dropSessions(); };
    }
    return [](ScenarioPlayer& player) { player.rig().simulator().cutMessage(); };
}

Action parseProtocols(ScenarioLine& line) {
    constexpr long first = VirtualSimulator::oldestProtocol;
    constexpr long last = VirtualSimulator::newestProtocol;
    const long oldest = line.number("oldest protocol version", first, last);
    const long newest = line.number("newest protocol version", oldest, last);
    line.end();
    return [oldest, newest](ScenarioPlayer& player) {
        player.rig().simulator().takeProtocols(static_cast<std::uint32_t>(oldest), static_cast<std::uint32_t>(newest));
    };
}

Action parseSim(ScenarioLine& line, const Scenario&) {
    static constexpr std::array<std::string_view, 13> known{"start", "vanish", "quit",     "die",    "drop",
                                                            "cut",   "refuse", "stall",    "hangup", "trickle",
                                                            "delay", "raw",    "protocols"};
    const std::size_t word = line.choice("thing that the simulator does", known);
    if (known[word] == "raw") {
        return [bytes = line.hexBytes()](ScenarioPlayer& player) { player.rig().simulator().sendRaw(bytes); };
    }
    if (known[word] == "protocols") {
        return parseProtocols(line);
    }
    if (known[word] == "delay") {
        const auto time = line.duration();
        line.end();
        return [time](ScenarioPlayer& player) { player.rig().simulator().delayOpens(time); };
    }
    return word < 6 ? parseSimEvent(line, known[word]) : parseSimSwitch(line, known[word]);
}

Action parseAnswers(ScenarioLine& line) {
    const auto answers = static_cast<ModuleAnswers>(line.choice("kind of answers", moduleAnswersWords));
    line.end();
    return [answers](ScenarioPlayer& player) { player.rig().simulator().setModuleAnswers(answers); };
}

Action parseModule(ScenarioLine& line, const Scenario&) {
    static constexpr std::array<std::string_view, 7> known{"silent", "refuse", "says",   "lvars",
                                                           "start",  "stop",   "answers"};
    switch (line.choice("thing that the module does", known)) {
    case 0:
        return switchOf(line, [](VirtualSimulator& simulator, bool on) { simulator.silenceModule(on); });
    case 1:
        return switchOf(line, [](VirtualSimulator& simulator, bool on) { simulator.failRegistrations(on); });
    case 2:
        return [text = line.rest("what it says")](ScenarioPlayer& player) { player.rig().simulator().respond(text); };
    case 3:
        return [text = line.rest("the area's text")](ScenarioPlayer& player) {
            player.rig().simulator().setLVarsText(text);
        };
    case 4:
        line.end();
        return [](ScenarioPlayer& player) { player.rig().simulator().startModule(); };
    case 5:
        line.end();
        return [](ScenarioPlayer& player) { player.rig().simulator().stopModule(); };
    default:
        return parseAnswers(line);
    }
}

Action parseOtherClient(ScenarioLine& line, const Scenario&) {
    return [text = line.rest("what another program sends to the module")](ScenarioPlayer& player) {
        player.rig().simulator().sendAsOtherClient(text);
    };
}

Action parseBattery(ScenarioLine& line, const Scenario&) {
    return switchOf(line, [](VirtualSimulator& simulator, bool on) { simulator.setBattery(on); });
}

Action parseLVar(ScenarioLine& line, const Scenario&) {
    const std::string name = line.word("the variable's name");
    const double value = line.decimal("value");
    line.end();
    return [name, value](ScenarioPlayer& player) { player.rig().simulator().setLVar(name, value); };
}

/// The name may have blanks; the value is the last word.
Action parseAircraftVariable(ScenarioLine& line, const Scenario&) {
    std::string name = line.word("the variable's name");
    while (!line.atLastWord()) {
        name += ' ' + line.word("the variable's name");
    }
    const double value = line.decimal("value");
    return [name, value](ScenarioPlayer& player) { player.rig().simulator().setAircraftVariable(name, value); };
}

// Time and words.

Action parseWait(ScenarioLine& line, const Scenario&) {
    const auto time = line.duration();
    line.end();
    return [time](ScenarioPlayer& player) { player.wait(time); };
}

Action parsePause(ScenarioLine& line, const Scenario&) {
    const auto time = line.duration();
    line.end();
    return [time](ScenarioPlayer& player) { player.pause(time); };
}

/// The words themselves are taken from the whole line; see `parseInput`.
Action parseSay(ScenarioLine& line, const Scenario&) {
    line.rest("some words");
    return [](ScenarioPlayer&) {};
}

constexpr std::string_view sayWord = "say ";

constexpr std::array<Verb, 17> verbs{{{"plug", parsePlug},
                                      {"unplug", parseUnplug},
                                      {"replug", parseReplug},
                                      {"start", parseStart},
                                      {"stop", parseStop},
                                      {"connect", parseConnect},
                                      {"session", parseSession},
                                      {"console", parseConsole},
                                      {"sim", parseSim},
                                      {"module", parseModule},
                                      {"battery", parseBattery},
                                      {"lvar", parseLVar},
                                      {"avar", parseAircraftVariable},
                                      {"other-client", parseOtherClient},
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
    input.apply = parseAction(line, scenario);
    return input;
}
