#pragma once

#include "simulation/simulator/virtual_simulator.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

enum class ConsoleOutcome { Done, Help, Exit, BadCommand };

/// Carries out one line of text, such as "battery on", on the simulator. An empty line does nothing. With BadCommand
/// `error` tells what is wrong with the line.
ConsoleOutcome runConsoleCommand(VirtualSimulator& simulator, std::string_view line, std::string& error);

/// None for a word that isn't one of `moduleAnswersWords`.
std::optional<ModuleAnswers> moduleAnswersOf(std::string_view word);

/// The commands and their arguments, one a line.
std::string consoleHelp();

/// A record as one JSON object: kind, seconds since `start`, session, and what else the kind has.
std::string recordAsJson(const SimulatorRecord& record, std::chrono::steady_clock::time_point start);

/// {"kind":"listening",…} with the port, or the pipe.
std::string listeningAsJson(const SimConnectEndpoint& endpoint);

/// {"kind":…,"text":…}
std::string noticeAsJson(std::string_view kind, std::string_view text);
