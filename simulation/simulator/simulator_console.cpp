#include "simulation/simulator/simulator_console.h"

#include "simulation/simulator/simulator_controls.h"
#include "text/ascii.h"

#include <array>
#include <cstdio>
#include <locale>
#include <optional>
#include <sstream>

namespace {

// Bytes above 127 are written as numbers, since they may not be UTF-8.
std::string textAsJson(std::string_view text) {
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
    line = trimmed(line);
    const std::string_view word = line.substr(0, line.find_first_of(asciiSpace));
    if (word.empty()) {
        return ConsoleOutcome::Done;
    }
    if (word == "exit") {
        return ConsoleOutcome::Exit;
    }
    if (word == "help") {
        return ConsoleOutcome::Help;
    }
    const std::optional<SimulatorRequest> request = readSimulatorRequest(line, error);
    if (!request) {
        return ConsoleOutcome::BadCommand;
    }
    if (request->control->rigOnly) {
        error = "Unknown command: " + std::string(word);
        return ConsoleOutcome::BadCommand;
    }
    request->action(simulator);
    return ConsoleOutcome::Done;
}

std::string consoleHelp() {
    std::string help;
    const auto addLine = [&](std::string_view word, std::string_view argument, std::string_view effect) {
        constexpr std::size_t column = 22;
        std::string usage = "  " + std::string(word) + " " + std::string(argument);
        if (usage.size() < column) {
            usage.resize(column, ' ');
        } else {
            usage += '\n' + std::string(column, ' ');
        }
        help += usage + std::string(effect) + "\n";
    };
    for (const SimulatorControl& control : simulatorControls()) {
        if (!control.rigOnly) {
            addLine(control.word, control.argument, control.help);
        }
    }
    addLine("help", "", "shows the commands");
    addLine("exit", "", "ends the program");
    return help;
}

std::string recordAsJson(const SimulatorRecord& record, std::chrono::steady_clock::time_point start) {
    std::ostringstream json;
    json.imbue(std::locale::classic());
    const std::chrono::duration<double> seconds = record.time - start;
    json << R"({"kind":)" << textAsJson(simulatorRecordKindName(record.kind)) << R"(,"time":)" << std::fixed
         << seconds.count() << R"(,"session":)" << record.session;
    if (hasText(record.kind)) {
        json << R"(,"text":)" << textAsJson(record.text);
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
    json +=
        endpoint.pipe.empty() ? R"("port":)" + std::to_string(endpoint.port) : R"("pipe":)" + textAsJson(endpoint.pipe);
    return json + "}";
}

std::string noticeAsJson(std::string_view kind, std::string_view text) {
    return R"({"kind":)" + textAsJson(kind) + R"(,"text":)" + textAsJson(text) + "}";
}
