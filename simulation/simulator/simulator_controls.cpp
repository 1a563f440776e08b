#include "simulation/simulator/simulator_controls.h"

#include "hid/hex_text.h"
#include "text/ascii.h"
#include "text/backlight_variable.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <sstream>
#include <utility>
#include <vector>

namespace {

std::vector<std::string> wordsOf(std::string_view text) {
    std::istringstream stream{std::string(text)};
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

std::optional<double> numberOf(std::string_view text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

// These read arguments. A null action means that the argument is wrong.

template <auto Act>
SimulatorAction nothing(std::string_view argument) {
    if (!argument.empty()) {
        return nullptr;
    }
    return [](VirtualSimulator& simulator) { std::invoke(Act, simulator); };
}

template <auto Switch>
SimulatorAction onOff(std::string_view argument) {
    if (argument != "on" && argument != "off") {
        return nullptr;
    }
    return [on = argument == "on"](VirtualSimulator& simulator) { std::invoke(Switch, simulator, on); };
}

template <auto Take>
SimulatorAction text(std::string_view argument) {
    if (argument.empty()) {
        return nullptr;
    }
    return [taken = std::string(argument)](VirtualSimulator& simulator) { std::invoke(Take, simulator, taken); };
}

SimulatorAction light(std::string_view argument) {
    const std::optional<double> value = numberOf(argument);
    if (!value) {
        return nullptr;
    }
    return [level = *value](VirtualSimulator& simulator) { simulator.setLVar(backlightVariable, level); };
}

SimulatorAction localVariable(std::string_view argument) {
    const std::vector<std::string> words = wordsOf(argument);
    const std::optional<double> value = words.size() == 2 ? numberOf(words[1]) : std::nullopt;
    if (!value) {
        return nullptr;
    }
    return [name = words[0], number = *value](VirtualSimulator& simulator) { simulator.setLVar(name, number); };
}

/// An aircraft variable's name may contain blanks; its value is the last word.
SimulatorAction aircraftVariable(std::string_view argument) {
    const std::size_t blank = argument.find_last_of(asciiSpace);
    const std::optional<double> value =
        blank == std::string_view::npos ? std::nullopt : numberOf(argument.substr(blank + 1));
    if (!value) {
        return nullptr;
    }
    return [name = std::string(trimmed(argument.substr(0, blank))), number = *value](VirtualSimulator& simulator) {
        simulator.setAircraftVariable(name, number);
    };
}

SimulatorAction delay(std::string_view argument) {
    constexpr double longest = 3600000;
    const std::optional<double> value = numberOf(argument);
    if (!value || !(*value >= 0 && *value <= longest)) {
        return nullptr;
    }
    return [time = std::chrono::milliseconds(std::lround(*value))](VirtualSimulator& simulator) {
        simulator.delayOpens(time);
    };
}

std::optional<std::uint32_t> protocolOf(std::string_view text) {
    const std::optional<double> number = numberOf(text);
    const bool isVersion = number && *number == std::floor(*number) && *number >= VirtualSimulator::oldestProtocol &&
                           *number <= VirtualSimulator::newestProtocol;
    return isVersion ? std::optional(static_cast<std::uint32_t>(*number)) : std::nullopt;
}

SimulatorAction protocols(std::string_view argument) {
    const std::vector<std::string> words = wordsOf(argument);
    const auto oldest = words.size() == 2 ? protocolOf(words[0]) : std::nullopt;
    const auto newest = words.size() == 2 ? protocolOf(words[1]) : std::nullopt;
    if (!oldest || !newest || *oldest > *newest) {
        return nullptr;
    }
    return [first = *oldest, last = *newest](VirtualSimulator& simulator) { simulator.takeProtocols(first, last); };
}

SimulatorAction rawBytes(std::string_view argument) {
    std::vector<std::uint8_t> bytes;
    for (const std::string& word : wordsOf(argument)) {
        const auto group = bytesFromHex(word);
        if (!group) {
            return nullptr;
        }
        bytes.insert(bytes.end(), group->begin(), group->end());
    }
    if (bytes.empty()) {
        return nullptr;
    }
    return [bytes](VirtualSimulator& simulator) { simulator.sendRaw(bytes); };
}

SimulatorAction moduleChange(std::string_view argument) {
    const std::vector<std::string> words = wordsOf(argument);
    if (words.size() == 2 && words[0] == "answers") {
        const std::optional<ModuleAnswers> answers = moduleAnswersOf(words[1]);
        return answers ? [kind = *answers](VirtualSimulator& simulator) { simulator.setModuleAnswers(kind); }
                       : SimulatorAction();
    }
    if (argument == "start") {
        return &VirtualSimulator::startModule;
    }
    return argument == "stop" ? &VirtualSimulator::stopModule : SimulatorAction();
}

void startAgain(VirtualSimulator& simulator) {
    simulator.refuseOpens(false);
}

void doNothing(VirtualSimulator&) {}

using Simulator = VirtualSimulator;

constexpr std::array controls{
    SimulatorControl{"battery", "on|off", "switches both of the aircraft's batteries", "Aircraft’s battery",
                     onOff<&Simulator::setBattery>},
    SimulatorControl{"lvar", "NAME VALUE", "sets a local variable", "", localVariable},
    SimulatorControl{"light", "VALUE", "sets the cockpit light, the local variable that the boards' lights follow",
                     "Cockpit light", light},
    SimulatorControl{"avar", "NAME VALUE", "sets an aircraft variable, such as LIGHT POTENTIOMETER:3", "",
                     aircraftVariable},
    SimulatorControl{"text", "TEXT", "writes a text into the module's variable area", "",
                     text<&Simulator::setLVarsText>},
    SimulatorControl{"respond", "TEXT", "writes a text into the module's response area", "", text<&Simulator::respond>},
    SimulatorControl{"other-client", "TEXT", "another program sends the module a command over the same areas", "",
                     text<&Simulator::sendAsOtherClient>},
    SimulatorControl{"start", "", "starts the simulator, also after 'quit' or 'die'", "Start", nothing<&startAgain>},
    SimulatorControl{"quit", "", "shuts the simulator down cleanly", "Quit", nothing<&Simulator::quit>},
    SimulatorControl{"die", "", "crashes the simulator", "Crash", nothing<&Simulator::die>},
    SimulatorControl{"vanish", "", "takes its process off the list of processes; its sessions continue", "",
                     nothing<&doNothing>, true},
    SimulatorControl{"drop", "", "closes all sessions; the simulator keeps running", "Drop the session",
                     nothing<&Simulator::dropSessions>},
    SimulatorControl{"refuse", "on|off", "accepts no new connections", "Refuses sessions",
                     onOff<&Simulator::refuseOpens>},
    SimulatorControl{"hangup", "on|off", "closes connections when their clients introduce themselves", "",
                     onOff<&Simulator::hangUpOnOpens>},
    SimulatorControl{"protocols", "OLDEST NEWEST", "accepts only clients of these protocol versions, from 2 to 6", "",
                     protocols},
    SimulatorControl{"late", "MILLISECONDS", "handles what new clients send only after this time", "", delay},
    SimulatorControl{"module", "start|stop|answers equal|different|measured",
                     "starts or ends the module; makes answers with the same text equal or not", "", moduleChange},
    SimulatorControl{"silent", "on|off", "the module neither answers nor delivers values", "Module is silent",
                     onOff<&Simulator::silenceModule>},
    SimulatorControl{"error", "on|off", "the module refuses to register clients", "Module answers with an error",
                     onOff<&Simulator::failRegistrations>},
    SimulatorControl{"stall", "on|off", "reads nothing from any client", "", onOff<&Simulator::stopReading>},
    SimulatorControl{"trickle", "on|off", "sends byte by byte", "", onOff<&Simulator::sendByteByByte>},
    SimulatorControl{"raw", "BYTES", "sends these bytes, written as 01 02ff, to all clients", "", rawBytes},
    SimulatorControl{"cut", "", "cuts a message in the middle and closes all sessions", "",
                     nothing<&Simulator::cutMessage>},
};

} // namespace

std::string SimulatorControl::usage() const {
    return std::string(trimmed(std::string(word) + ' ' + std::string(argument)));
}

std::optional<SimulatorRequest> SimulatorControl::request(std::string_view givenArgument) const {
    SimulatorAction action = read(givenArgument);
    return action ? std::optional(SimulatorRequest{this, std::string(givenArgument), std::move(action)}) : std::nullopt;
}

std::span<const SimulatorControl> simulatorControls() {
    return controls;
}

const SimulatorControl* findSimulatorControl(std::string_view word) {
    const auto* const found = std::ranges::find(controls, word, &SimulatorControl::word);
    return found == controls.end() ? nullptr : found;
}

std::optional<SimulatorRequest> readSimulatorRequest(std::string_view line, std::string& error) {
    line = trimmed(line);
    const std::string_view word = line.substr(0, line.find_first_of(asciiSpace));
    const SimulatorControl* const control = findSimulatorControl(word);
    if (control == nullptr) {
        error = "Unknown command: " + std::string(word);
        return std::nullopt;
    }
    std::optional<SimulatorRequest> request = control->request(trimmed(line.substr(word.size())));
    if (!request) {
        error = "Usage: " + control->usage();
    }
    return request;
}

std::optional<ModuleAnswers> moduleAnswersOf(std::string_view word) {
    const auto* const found = std::ranges::find(moduleAnswersWords, word);
    return found == moduleAnswersWords.end()
               ? std::nullopt
               : std::optional(static_cast<ModuleAnswers>(found - moduleAnswersWords.begin()));
}
