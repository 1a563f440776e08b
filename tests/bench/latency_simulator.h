#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string_view>
#include <thread>
#include <vector>

/// The least of a simulator that a subject of the bench needs: takes one connection, confirms a registration, and notes
/// when each command came and whether it is the one expected next.
class LatencySimulator {
public:
    using Clock = std::chrono::steady_clock;

    /// `expected` commands will come, numbered from 0 modulo `controls`.
    LatencySimulator(std::size_t expectedCommands, std::uint32_t controlCount);
    ~LatencySimulator();
    LatencySimulator(const LatencySimulator&) = delete;
    LatencySimulator& operator=(const LatencySimulator&) = delete;

    std::uint16_t port() const { return listeningPort; }
    /// The subject takes reports from now on. Valid for the floor once it is connected.
    bool waitUntilReady(bool needsRegistration) const;
    /// Waits until all commands came, or none has for a while.
    bool waitForAll() const;

    // Once all came:
    const std::vector<Clock::time_point>& arrivals() const { return times; }
    std::size_t received() const { return count.load(); }
    /// Commands that were not the one expected at their place.
    std::size_t misplaced() const { return wrong.load(); }

private:
    void serve();
    void readLink(int link);
    void handle(int link, const std::uint8_t* packet, std::size_t size);
    void handleCommand(int link, std::string_view text);

    const std::uint32_t controls;
    std::vector<Clock::time_point> times;
    std::atomic<std::size_t> count{0};
    std::atomic<std::size_t> wrong{0};
    std::atomic<bool> connected{false};
    std::atomic<bool> registered{false};
    int listener = -1;
    std::uint16_t listeningPort = 0;
    std::atomic<int> openLink{-1};
    std::thread thread;
};
