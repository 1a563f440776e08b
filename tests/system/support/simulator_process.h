#pragma once

#include "simulation/simulator/virtual_simulator.h"
#include "tests/support/temp_folder.h"
#include "tests/system/support/child_process.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A line of the simulator's output.
struct SimulatorLine {
    std::string kind;
    std::string text;
    std::int32_t port = 0;
};

/// The virtual simulator as a process with the name that the bridge looks for.
class SimulatorProcess {
public:
    /// Returns once it listens.
    SimulatorProcess();

    /// None when it listens on its pipe.
    std::optional<std::uint16_t> port() const { return listeningPort; }

    /// One line of its command language; returns once it has taken effect.
    void command(std::string_view line);
    /// Ends it as a crash does.
    void kill();
    /// Replaces an ended process by another on the same port.
    void start();

    /// All lines until now, in order.
    std::vector<SimulatorLine> lines() const;
    std::vector<std::string> texts(SimulatorRecordKind kind) const;

    /// Waits until a line of that kind and text has come that often; false after the limit.
    bool waitFor(SimulatorRecordKind kind, std::string_view text, std::size_t count = 1) const;

private:
    TempFolder folder;
    std::optional<std::uint16_t> listeningPort;
    /// Given to the present process.
    std::size_t commandsGiven = 0;
    std::unique_ptr<ChildProcess> child;

    /// False when it ends without listening.
    bool launch();
};
