#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// A mode of latency-bench that runs as a process of its own: the floor, or the bridge with a configuration.
struct LatencySubject {
    std::string mode;
    /// Empty: it doesn't register before it takes reports.
    std::string configPath;
};

struct LatencyLoad {
    std::size_t reports = 0;
    /// 0: as fast as they go.
    double reportsPerSecond = 0;
    std::uint32_t controls = 1000;
    /// How long the idle process is watched after the load.
    double idleSeconds = 0;
};

struct LatencyResult {
    std::size_t sent = 0;
    std::size_t received = 0;
    std::size_t misplaced = 0;
    /// From the report's send to the command's arrival, in the order of the reports.
    std::vector<double> latencyUs;
    double reportsPerSecond = 0;
    /// Measured after the last command.
    double residentMiB = 0;
    /// Share of one core while nothing happens; only if asked for.
    double idleCpu = 0;
};

/// Starts the subject, feeds it, and ends it.
LatencyResult measureLatency(const LatencySubject& subject, const LatencyLoad& load);

/// The share of one core that the subject takes with its board attached and no simulator.
double idleWithoutSimulator(const LatencySubject& subject, double seconds);
