// The latency of a report through the whole bridge, against a program that only reads and sends.

#include "tests/bench/latency_measure.h"
#include "tests/support/numbered_controls.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace {

constexpr std::uint32_t controls = 1000;
constexpr double rate = 1000;
constexpr std::size_t reportsPerRound = 4000;
/// Floor and bridge take turns, so that a busy moment of the machine hits both.
constexpr int rounds = 3;

constexpr const char* help = R"(latency-bench: a report's way to the simulator, floor against bridge

  --reports N   reports of the flood (1000000)
  --check       exit code 1 when a goal is missed by far, or a command is lost
  --help        this text
)";

struct Options {
    std::size_t flood = 1000000;
    bool check = false;
};

/// A folder with the configuration of `controls` buttons, one command each.
std::string writeConfiguration() {
    const std::string folder = programFolder() + "latency-config";
    std::filesystem::create_directories(folder);
    std::ofstream(folder + "/config.json")
        << R"({"hid":{"vid":"1234","pid":"ABCD"},"mappings":{"buttonConfigPath":"buttons.json"}})";
    for (const auto& [name, text] : numberedControls(controls, "(>K:BENCH)")) {
        std::ofstream(folder + '/' + name) << text;
    }
    return folder + "/config.json";
}

void append(std::vector<double>& to, const std::vector<double>& from) {
    to.insert(to.end(), from.begin(), from.end());
}

void printLatency(const char* name, const std::vector<double>& samples) {
    std::printf("%-8s p50 %8.1f us   p99 %8.1f us   p99.9 %8.1f us   max %8.1f us\n", name, percentile(samples, 0.5),
                percentile(samples, 0.99), percentile(samples, 0.999), percentile(samples, 1));
}

int failures = 0;

/// Says whether a goal is reached; on a shared machine a missed one is no failure as long as it is within its bound.
void goal(bool reached, bool withinBound, const char* text) {
    std::printf("%s: %s%s\n", reached ? "reached" : "MISSED ", text, withinBound ? "" : " (far off)");
    failures += withinBound ? 0 : 1;
}

void mustHold(bool holds, const char* text) {
    goal(holds, holds, text);
}

bool isWhole(const LatencyResult& result) {
    return result.complete && result.received == result.sent && result.misplaced == 0;
}

void compareLatency(const LatencySubject& floor, const LatencySubject& bridge) {
    std::vector<double> floorUs;
    std::vector<double> bridgeUs;
    bool whole = true;
    const LatencyLoad load{reportsPerRound, rate, controls, 0};
    for (int round = 0; round < rounds; ++round) {
        append(floorUs, measureLatency(floor, load).latencyUs);
        const LatencyResult result = measureLatency(bridge, load);
        whole = whole && isWhole(result);
        append(bridgeUs, result.latencyUs);
    }
    std::printf("report to command, %.0f reports/s, %zu reports each\n", rate, floorUs.size());
    printLatency("floor", floorUs);
    printLatency("bridge", bridgeUs);
    mustHold(whole, "every report became its command, in order");
    const double middle = percentile(bridgeUs, 0.5) / percentile(floorUs, 0.5);
    const double behindUs = percentile(bridgeUs, 0.999) - percentile(floorUs, 0.999);
    goal(middle <= 2, middle <= 6, "p50 is at most twice the floor's");
    goal(behindUs <= 1000, behindUs <= 50000, "p99.9 is at most 1 ms behind the floor's");
}

void flood(const LatencySubject& bridge, std::size_t reports) {
    const LatencyResult result = measureLatency(bridge, {reports, 0, controls, 0});
    std::printf("flood: %zu reports, %zu commands, %zu out of place, %.0f/s, %.1f MiB resident afterwards\n",
                result.sent, result.received, result.misplaced, result.reportsPerSecond, result.residentMiB);
    mustHold(isWhole(result), "no command of the flood is lost, doubled or out of order");
}

void idle(const LatencySubject& bridge) {
    constexpr double seconds = 10;
    const double alone = idleWithoutSimulator(bridge, seconds);
    const LatencyResult result = measureLatency(bridge, {100, rate, controls, seconds});
    std::printf(
        "idle with one board: %.3f %% of a core; with a session, polled every 15 ms: %.3f %%; %.1f MiB resident\n",
        100 * alone, 100 * result.idleCpu, result.residentMiB);
    goal(alone < 0.002, alone < 0.02, "idle with one board and no simulator takes under 0.2 % of a core");
    goal(result.idleCpu < 0.002, result.idleCpu < 0.02,
         "idle with one board and a session takes under 0.2 % of a core");
    mustHold(result.residentMiB > 0 && result.residentMiB < 8, "resident memory stays under 8 MiB");
}

bool readOptions(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--check") == 0) {
            options.check = true;
        } else if (std::strcmp(argv[i], "--reports") == 0 && i + 1 < argc) {
            options.flood = std::stoul(argv[++i]);
        } else {
            return false;
        }
    }
    return true;
}

int run(const Options& options) {
    const std::string folder = programFolder();
    const LatencySubject floor{"floor", folder + "latency-floor", {}, false};
    const LatencySubject bridge{"bridge", folder + "latency-bridge", {writeConfiguration()}, true};
    compareLatency(floor, bridge);
    flood(bridge, options.flood);
    idle(bridge);
    return options.check && failures > 0 ? 1 : 0;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    if (!readOptions(argc, argv, options)) {
        std::fputs(help, stdout);
        return argc == 2 && std::strcmp(argv[1], "--help") == 0 ? 0 : 2;
    }
    try {
        return run(options);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "latency-bench: %s\n", failure.what());
        return 1;
    }
}
