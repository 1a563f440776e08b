#pragma once

#include "tests/bench/latency_simulator.h"

#include <cstdint>
#include <string>
#include <vector>

/// A program under measure, fed with reports through a socket: "floor" or "bridge".
struct LatencySubject {
    std::string name;
    std::string program;
    /// Behind the report socket and the port.
    std::vector<std::string> arguments;
    /// It registers before it takes reports.
    bool registers = false;
};

struct LatencyResult {
    bool complete = false;
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

struct LatencyLoad {
    std::size_t reports = 0;
    /// 0: as fast as they go.
    double reportsPerSecond = 0;
    std::uint32_t controls = 1000;
    /// How long the idle process is watched after the load.
    double idleSeconds = 0;
};

/// Starts the subject, feeds it, and ends it.
LatencyResult measureLatency(const LatencySubject& subject, const LatencyLoad& load);

/// The share of one core that the subject takes with its board attached and no simulator to be seen.
double idleWithoutSimulator(const LatencySubject& subject, double seconds);

/// The value below which that share of the samples lies.
double percentile(std::vector<double> samples, double share);

/// The folder of this program, with a slash behind it.
std::string programFolder();
