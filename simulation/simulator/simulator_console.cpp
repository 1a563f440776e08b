#include "simulation/simulator/simulator_console.h"

#include "text/ascii.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <locale>
#include <optional>
#include <span>
#include <sstream>
#include <vector>

namespace {

// The variable whose value dims the boards' lights.
constexpr std::string_view lightVariable = "LIGHTING_POTENTIOMETER_5";

constexpr std::string_view blanks = " \t\r\n";

using Words = std::span<const std::string>;

struct Command {
    std::string_view name;
    std::string_view arguments;
    std::string_view effect;
    /// False when the arguments are none of its own. Gets the words behind the name and the text that they stand in.
    bool (*run)(VirtualSimulator& simulator, Words words, std::string_view rest);
};

std::optional<double> numberOf(std::string_view text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

template <typename Setter>
bool setSwitch(Words words, const Setter& setter) {
    if (words.size() != 1 || (words[0] != "on" && words[0] != "off")) {
        return false;
    }
    setter(words[0] == "on");
    return true;
}

template <typename Action>
bool actOnText(std::string_view text, const Action& action) {
    if (text.empty()) {
        return false;
    }
    action(text);
    return true;
}

template <typename Action>
bool act(Words words, const Action& action) {
    if (!words.empty()) {
        return false;
    }
    action();
    return true;
}

bool setVariable(VirtualSimulator& simulator, std::string_view name, std::string_view valueText) {
    const std::optional<double> value = numberOf(valueText);
    if (value) {
        simulator.setLVar(name, *value);
    }
    return value.has_value();
}

// A variable's name may have blanks; its value is the last word.
bool setAircraftVariable(VirtualSimulator& simulator, Words words, std::string_view rest) {
    const std::optional<double> value = words.size() > 1 ? numberOf(words.back()) : std::nullopt;
    if (value) {
        rest.remove_suffix(words.back().size());
        simulator.setAircraftVariable(rest.substr(0, rest.find_last_not_of(blanks) + 1), *value);
    }
    return value.has_value();
}

bool setModuleAnswers(VirtualSimulator& simulator, std::string_view word) {
    const std::optional<ModuleAnswers> answers = moduleAnswersOf(word);
    if (answers) {
        simulator.setModuleAnswers(*answers);
    }
    return answers.has_value();
}

bool changeModule(VirtualSimulator& simulator, Words words) {
    if (words.size() == 2 && words[0] == "answers") {
        return setModuleAnswers(simulator, words[1]);
    }
    if (words.size() == 1 && words[0] == "start") {
        simulator.startModule();
        return true;
    }
    if (words.size() == 1 && words[0] == "stop") {
        simulator.stopModule();
        return true;
    }
    return false;
}

bool delay(VirtualSimulator& simulator, Words words) {
    constexpr double longest = 3600000;
    const std::optional<double> value = words.size() == 1 ? numberOf(words[0]) : std::nullopt;
    if (!value || !(*value >= 0 && *value <= longest)) {
        return false;
    }
    simulator.delayOpens(std::chrono::milliseconds(std::lround(*value)));
    return true;
}

bool takeProtocols(VirtualSimulator& simulator, Words words) {
    const std::optional<double> oldest = words.size() == 2 ? numberOf(words[0]) : std::nullopt;
    const std::optional<double> newest = words.size() == 2 ? numberOf(words[1]) : std::nullopt;
    const auto isVersion = [](double number) {
        return number == std::floor(number) && number >= VirtualSimulator::oldestProtocol &&
               number <= VirtualSimulator::newestProtocol;
    };
    if (!oldest || !newest || !isVersion(*oldest) || !isVersion(*newest) || *oldest > *newest) {
        return false;
    }
    simulator.takeProtocols(static_cast<std::uint32_t>(*oldest), static_cast<std::uint32_t>(*newest));
    return true;
}

const std::array<Command, 19> commands{{
    {"battery", "on|off", "switches the battery",
     [](VirtualSimulator& simulator, Words words, std::string_view) {
         return setSwitch(words, [&](bool on) { simulator.setBattery(on); });
     }},
    {"lvar", "NAME VALUE", "sets a local variable",
     [](VirtualSimulator& simulator, Words words, std::string_view) {
         return words.size() == 2 && setVariable(simulator, words[0], words[1]);
     }},
    {"light", "VALUE", "sets the local variable LIGHTING_POTENTIOMETER_5",
     [](VirtualSimulator& simulator, Words words, std::string_view) {
         return words.size() == 1 && setVariable(simulator, lightVariable, words[0]);
     }},
    {"avar", "NAME VALUE", "sets an aircraft variable, such as LIGHT POTENTIOMETER:3",
     [](VirtualSimulator& simulator, Words words, std::string_view rest) {
         return setAircraftVariable(simulator, words, rest);
     }},
    {"text", "TEXT", "writes a text into the module's variable area",
     [](VirtualSimulator& simulator, Words, std::string_view rest) {
         return actOnText(rest, [&](std::string_view text) { simulator.setLVarsText(text); });
     }},
    {"respond", "TEXT", "writes a text into the module's response area",
     [](VirtualSimulator& simulator, Words, std::string_view rest) {
         return actOnText(rest, [&](std::string_view text) { simulator.respond(text); });
     }},
    {"other-client", "TEXT", "another program sends the module a command over the same areas",
     [](VirtualSimulator& simulator, Words, std::string_view rest) {
         return actOnText(rest, [&](std::string_view text) { simulator.sendAsOtherClient(text); });
     }},
    {"quit", "", "ends the simulator in order; 'refuse off' starts it again",
     [](VirtualSimulator& simulator, Words words, std::string_view) { return act(words, [&] { simulator.quit(); }); }},
    {"die", "", "ends the simulator with a crash; 'refuse off' starts it again",
     [](VirtualSimulator& simulator, Words words, std::string_view) { return act(words, [&] { simulator.die(); }); }},
    {"drop", "", "closes all connections and runs on",
     [](VirtualSimulator& simulator, Words words, std::string_view) {
         return act(words, [&] { simulator.dropSessions(); });
     }},
    {"refuse", "on|off", "stops listening, or listens again",
     [](VirtualSimulator& simulator, Words words, std::string_view) {
         return setSwitch(words, [&](bool on) { simulator.refuseOpens(on); });
     }},
    {"hangup", "on|off", "closes connections when their clients introduce themselves",
     [](VirtualSimulator& simulator, Words words, std::string_view) {
         return setSwitch(words, [&](bool on) { simulator.hangUpOnOpens(on); });
     }},
    {"protocols", "OLDEST NEWEST", "takes only clients of these protocol versions, of 2 to 6",
     [](VirtualSimulator& simulator, Words words, std::string_view) { return takeProtocols(simulator, words); }},
    {"late", "MILLISECONDS", "handles what new clients send only after this time",
     [](VirtualSimulator& simulator, Words words, std::string_view) { return delay(simulator, words); }},
    {"module", "start|stop|answers equal|different|measured",
     "starts or ends the module; makes answers with the same text equal or not",
     [](VirtualSimulator& simulator, Words words, std::string_view) { return changeModule(simulator, words); }},
    {"silent", "on|off", "the module neither answers nor delivers values",
     [](VirtualSimulator& simulator, Words words, std::string_view) {
         return setSwitch(words, [&](bool on) { simulator.silenceModule(on); });
     }},
    {"error", "on|off", "the module refuses to register clients",
     [](VirtualSimulator& simulator, Words words, std::string_view) {
         return setSwitch(words, [&](bool on) { simulator.failRegistrations(on); });
     }},
    {"stall", "on|off", "nothing is read from any client",
     [](VirtualSimulator& simulator, Words words, std::string_view) {
         return setSwitch(words, [&](bool on) { simulator.stopReading(on); });
     }},
    {"cut", "", "cuts a message in its middle and closes all connections",
     [](VirtualSimulator& simulator, Words words, std::string_view) {
         return act(words, [&] { simulator.cutMessage(); });
     }},
}};

std::vector<std::string> wordsOf(std::string_view line) {
    std::istringstream stream{std::string(line)};
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

// The text behind the first word, blanks around it left out.
std::string_view restOf(std::string_view line, std::string_view firstWord) {
    line.remove_prefix(line.find(firstWord) + firstWord.size());
    return trimmed(line, blanks);
}

// Bytes above 127 are told by number: nothing says that they are UTF-8.
std::string quoted(std::string_view text) {
    std::string json = "\"";
    for (const char letter : text) {
        const auto byte = static_cast<unsigned char>(letter);
        if (letter == '"' || letter == '\\') {
            json += '\\';
            json += letter;
        } else if (byte < 0x20 || byte > 0x7E) {
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(byte));
            json += escape.data();
        } else {
            json += letter;
        }
    }
    return json + '"';
}

bool hasText(SimulatorRecordKind kind) {
    return kind != SimulatorRecordKind::Connected && kind != SimulatorRecordKind::Closed &&
           kind != SimulatorRecordKind::Dummy && kind != SimulatorRecordKind::Exception;
}

bool hasValue(SimulatorRecordKind kind) {
    return kind == SimulatorRecordKind::Opened || kind == SimulatorRecordKind::Subscribed ||
           kind == SimulatorRecordKind::ClientEvent || kind == SimulatorRecordKind::Exception;
}

} // namespace

ConsoleOutcome runConsoleCommand(VirtualSimulator& simulator, std::string_view line, std::string& error) {
    const std::vector<std::string> words = wordsOf(line);
    if (words.empty()) {
        return ConsoleOutcome::Done;
    }
    if (words[0] == "exit") {
        return ConsoleOutcome::Exit;
    }
    if (words[0] == "help") {
        return ConsoleOutcome::Help;
    }
    const auto* const command = std::find_if(commands.begin(), commands.end(),
                                             [&](const Command& candidate) { return candidate.name == words[0]; });
    if (command == commands.end()) {
        error = "Unknown command: " + words[0];
        return ConsoleOutcome::BadCommand;
    }
    if (!command->run(simulator, Words(words).subspan(1), restOf(line, words[0]))) {
        error = "Usage: " + words[0] + " " + std::string(command->arguments);
        return ConsoleOutcome::BadCommand;
    }
    return ConsoleOutcome::Done;
}

std::optional<ModuleAnswers> moduleAnswersOf(std::string_view word) {
    const auto* const found = std::find(moduleAnswersWords.begin(), moduleAnswersWords.end(), word);
    return found == moduleAnswersWords.end()
               ? std::nullopt
               : std::optional(static_cast<ModuleAnswers>(found - moduleAnswersWords.begin()));
}

std::string consoleHelp() {
    std::string help;
    const auto addLine = [&](std::string_view name, std::string_view arguments, std::string_view effect) {
        constexpr std::size_t column = 22;
        std::string usage = "  " + std::string(name) + " " + std::string(arguments);
        if (usage.size() < column) {
            usage.resize(column, ' ');
        } else {
            usage += '\n' + std::string(column, ' ');
        }
        help += usage + std::string(effect) + "\n";
    };
    for (const Command& command : commands) {
        addLine(command.name, command.arguments, command.effect);
    }
    addLine("help", "", "tells the commands");
    addLine("exit", "", "ends the program");
    return help;
}

std::string recordAsJson(const SimulatorRecord& record, std::chrono::steady_clock::time_point start) {
    std::ostringstream json;
    json.imbue(std::locale::classic());
    const std::chrono::duration<double> seconds = record.time - start;
    json << R"({"kind":)" << quoted(simulatorRecordKindName(record.kind)) << R"(,"time":)" << std::fixed
         << seconds.count() << R"(,"session":)" << record.session;
    if (hasText(record.kind)) {
        json << R"(,"text":)" << quoted(record.text);
    }
    if (hasValue(record.kind)) {
        json << R"(,"value":)" << record.value;
    }
    if (record.kind == SimulatorRecordKind::Exception) {
        json << R"(,"sendId":)" << record.sendId << R"(,"index":)" << record.index;
    }
    json << '}';
    return json.str();
}

std::string listeningAsJson(const SimConnectEndpoint& endpoint) {
    std::string json = R"({"kind":"listening",)";
    json += endpoint.pipe.empty() ? R"("port":)" + std::to_string(endpoint.port) : R"("pipe":)" + quoted(endpoint.pipe);
    return json + "}";
}

std::string noticeAsJson(std::string_view kind, std::string_view text) {
    return R"({"kind":)" + quoted(kind) + R"(,"text":)" + quoted(text) + "}";
}
