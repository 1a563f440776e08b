// Plays faults on the whole bridge for a while: boards that come and go, sessions that are lost, a simulator that dies.

#include "tests/soak/soak_run.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <random>

namespace {

constexpr const char* help = R"(soak: the bridge among faults

  --lives N      lives of the bridge, each ended by the simulator's death (20)
  --minutes N    goes on for so long instead
  --seed N       the same faults again; otherwise others each time
  --help         this text
)";

struct Options {
    int lives = 20;
    double minutes = 0;
    std::uint32_t seed = std::random_device()();
};

bool readOptions(int argc, char** argv, Options& options) {
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::strcmp(argv[i], "--lives") == 0) {
            options.lives = std::atoi(argv[i + 1]);
        } else if (std::strcmp(argv[i], "--minutes") == 0) {
            options.minutes = std::atof(argv[i + 1]);
        } else if (std::strcmp(argv[i], "--seed") == 0) {
            options.seed = static_cast<std::uint32_t>(std::strtoul(argv[i + 1], nullptr, 10));
        } else {
            return false;
        }
    }
    return argc % 2 == 1;
}

void print(const SoakTotals& totals) {
    std::printf("%d lives, %d replugs, %d lost sessions, %d deaths; %llu checked presses all arrived; "
                "%llu presses amid faults gave %llu commands, none twice or out of order\n",
                totals.lives, totals.replugs, totals.lostSessions, totals.deaths,
                static_cast<unsigned long long>(totals.checkedPresses),
                static_cast<unsigned long long>(totals.flowingPresses),
                static_cast<unsigned long long>(totals.flowingCommands));
    std::fflush(stdout);
}

void soak(SoakRun& run, const Options& options) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    const auto elapsed = [&start] { return std::chrono::duration<double>(Clock::now() - start).count(); };
    double lastPrint = 0;
    while (options.minutes > 0 ? elapsed() < options.minutes * 60 : run.totals().lives < options.lives) {
        run.liveOnce({});
        if (elapsed() - lastPrint > 30) {
            lastPrint = elapsed();
            print(run.totals());
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    if (!readOptions(argc, argv, options)) {
        std::fputs(help, stdout);
        return argc == 2 && std::strcmp(argv[1], "--help") == 0 ? 0 : 2;
    }
    std::printf("seed %u\n", options.seed);
    try {
        SoakRun run(options.seed);
        soak(run, options);
        print(run.totals());
        const Resources now = currentResources();
        std::printf("at the end: %zu threads, %zu file descriptors, %.1f MiB\n", now.threads, now.fileDescriptors,
                    now.residentMiB);
        std::puts("check: 1 passed, 0 failed");
        return 0;
    } catch (const std::exception& failure) {
        std::printf("FAILED: %s\n", failure.what());
        std::puts("check: 0 passed, 1 failed");
        return 1;
    }
}
