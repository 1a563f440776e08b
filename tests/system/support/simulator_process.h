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

/// What the simulator's program has printed of one thing that it received.
struct SimulatorLine {
    std::string kind;
    std::string text;
    std::int32_t value = 0;
    std::int32_t port = 0;
};

/// The virtual simulator as a process of the name that the bridge looks for.
class SimulatorProcess {
public:
    /// Returns once it listens. `options` are those of its command line, besides where it listens.
    explicit SimulatorProcess(std::vector<std::string> options = {});

    /// None when it listens on its pipe.
    std::optional<std::uint16_t> port() const { return listeningPort; }
    ChildProcess& process() { return *child; }

    /// One line of its command language; returns once it has taken effect.
    void command(std::string_view line);
    /// Ends it as a crash does.
    void kill();
    /// Another process in its place, on the same port.
    void startAgain();

    /// All lines until now, in order.
    std::vector<SimulatorLine> lines() const;
    std::vector<std::string> texts(SimulatorRecordKind kind) const;

    /// Waits until a line of that kind and text has come that often; false at the limit.
    bool waitFor(SimulatorRecordKind kind, std::string_view text, std::size_t count = 1,
                 std::chrono::milliseconds limit = ChildProcess::defaultLimit) const;

private:
    void start();

    TempFolder folder;
    const std::vector<std::string> options;
    std::optional<std::uint16_t> listeningPort;
    /// Commands that the present process has been given.
    std::size_t commandsGiven = 0;
    std::unique_ptr<ChildProcess> child;
};
