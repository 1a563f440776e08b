#pragma once

#include "simulation/simulator/virtual_simulator.h"

#include <chrono>
#include <string>
#include <string_view>

enum class ConsoleOutcome { Done, Help, Exit, BadCommand };

/// Carries out one line, such as "battery on": a control of `simulatorControls`, or "help" or "exit", which are left to
/// the caller. An empty line does nothing. With BadCommand `error` says what is wrong with the line.
ConsoleOutcome runConsoleCommand(VirtualSimulator& simulator, std::string_view line, std::string& error);

/// The commands with their arguments and what they do.
std::string consoleHelp();

/// A record as one JSON object: kind, seconds since `start`, session, and what else the kind has.
std::string recordAsJson(const SimulatorRecord& record, std::chrono::steady_clock::time_point start);

/// {"kind":"listening",…} with the port, or the pipe.
std::string listeningAsJson(const SimConnectEndpoint& endpoint);

/// {"kind":…,"text":…}
std::string noticeAsJson(std::string_view kind, std::string_view text);
