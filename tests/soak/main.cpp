// Plays faults on the whole bridge for a while: boards that come and go, sessions that are lost, a simulator that
// crashes.

#include "tests/soak/soak_run.h"

#include <chrono>
#include <exception>
#include <iostream>
#include <random>
#include <string>

namespace {

constexpr const char* help = R"(soak: the bridge under faults

  --lives N      lives of the bridge, each ended by the simulator's crash (20)
  --minutes N    play for this long instead
  --seed N       the same faults again; otherwise different ones each time
  --help         this text
)";

struct Options {
    int lives = 20;
    double minutes = 0;
    std::uint32_t seed = std::random_device()();
};

bool readOptions(int argc, char** argv, Options& options) {
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string option = argv[i];
        if (option == "--lives") {
            options.lives = std::atoi(argv[i + 1]);
        } else if (option == "--minutes") {
            options.minutes = std::atof(argv[i + 1]);
        } else if (option == "--seed") {
            options.seed = static_cast<std::uint32_t>(std::strtoul(argv[i + 1], nullptr, 10));
        } else {
            return false;
        }
    }
    return argc % 2 == 1;
}

void soak(const Options& options) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(options.minutes * 60);
    SoakRun run(options.seed);
    while (options.minutes > 0 ? std::chrono::steady_clock::now() < end : run.totals().lives < options.lives) {
        run.liveOnce();
        if (run.totals().lives % 20 == 0) {
            std::cout << describe(run.totals()) << std::endl;
        }
    }
    const Resources now = currentResources();
    std::cout << describe(run.totals()) << "\nat the end: " << now.threads << " threads, " << now.fileDescriptors
              << " file descriptors, " << now.residentMiB << " MiB\n";
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    if (!readOptions(argc, argv, options)) {
        std::cout << help;
        return argc == 2 && std::string(argv[1]) == "--help" ? 0 : 2;
    }
    std::cout << "seed " << options.seed << std::endl;
    try {
        soak(options);
        std::cout << "check: 1 passed, 0 failed\n";
        return 0;
    } catch (const std::exception& failure) {
        std::cout << "FAILED: " << failure.what() << "\ncheck: 0 passed, 1 failed\n";
        return 1;
    }
}
