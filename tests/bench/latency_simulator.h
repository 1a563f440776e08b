#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <span>
#include <string_view>
#include <thread>
#include <vector>

/// The least of a simulator that a subject of the bench needs: takes one connection, confirms a registration, and notes
/// when each command came and whether it is the one expected next.
class LatencySimulator {
public:
    using Clock = std::chrono::steady_clock;

    /// `expectedCommands` will come, numbered from 0 modulo `controlCount`.
    LatencySimulator(std::size_t expectedCommands, std::uint32_t controlCount);
    ~LatencySimulator();
    LatencySimulator(const LatencySimulator&) = delete;
    LatencySimulator& operator=(const LatencySimulator&) = delete;

    std::uint16_t port() const { return listeningPort; }
    /// The subject is connected, and registered if it does that: it takes reports from now on.
    bool waitUntilReady(bool needsRegistration) const;
    /// Waits until all commands came, or for as long as that could take.
    void waitForAll() const;

    // Once all came:
    const std::vector<Clock::time_point>& arrivals() const { return times; }
    std::size_t received() const { return count.load(); }
    /// Commands that were not the one expected at their place.
    std::size_t misplaced() const { return wrong.load(); }

private:
    void serve();
    void handle(std::span<const std::uint8_t> packet);
    void handleCommand(std::string_view text);

    const std::uint32_t controls;
    std::vector<Clock::time_point> times;
    std::atomic<std::size_t> count{0};
    std::atomic<std::size_t> wrong{0};
    std::atomic<bool> registered{false};
    const int listener;
    std::uint16_t listeningPort = 0;
    /// Negative while nobody is connected.
    std::atomic<int> link{-1};
    std::thread thread;
};
