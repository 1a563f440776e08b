// The virtual simulator as a program: commands come on standard input, one a line; what the simulator receives goes to
// standard output as JSON, one object a line.

#include "simulation/simulator/simulator_console.h"
#include "simulation/simulator/simulator_controls.h"
#include "simulation/simulator/simulator_options.h"
#include "simulation/simulator/virtual_simulator.h"

#include <chrono>
#include <cstdint>
#include <iostream>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

namespace {

// The simulator's own port, 500, needs privileges on many systems.
constexpr std::uint16_t defaultPort = 50500;

constexpr std::string_view usage = "Usage: virtual-simulator [--port N | --pipe [NAME]] [--module-missing]\n"
                                   "                         [--answers KIND] [--keep] [--help]\n"
                                   "\n"
                                   "Plays a flight simulator with the MobiFlight module for SimConnect clients of\n"
                                   "this machine, and prints what they send as JSON, one object a line.\n"
                                   "\n"
                                   "  --port N        the port of 127.0.0.1 to listen on (default 50500; 0: any\n"
                                   "                  free one)\n"
                                   "  --pipe [NAME]   listen on a local pipe instead, by default the simulator's\n"
                                   "                  own (Windows only)\n"
                                   "  --module-missing\n"
                                   "                  run without the module until 'module start'\n"
                                   "  --answers KIND  as 'module answers KIND' below (default equal)\n"
                                   "  --keep          run on when standard input ends\n"
                                   "  --help          show this text\n"
                                   "\n"
                                   "Commands on standard input, one a line:\n";

// Prints whole lines from the simulator's thread and from the main one.
class Printer {
public:
    void print(std::string_view line) {
        const std::lock_guard lock(mutex);
        std::cout << line << std::endl; // Flushed: a reader at the other end of a pipe waits for this line.
    }

    /// Prints the line that `make` returns, with no other line before it. False: it returned none.
    template <typename Make>
    bool printFirst(const Make& make) {
        const std::lock_guard lock(mutex);
        const std::string line = make();
        if (!line.empty()) {
            std::cout << line << std::endl;
        }
        return !line.empty();
    }

private:
    // Held while a line is made and printed: guards standard output.
    std::mutex mutex;
};

// Carries out commands until one ends the program or the input ends.
bool readCommands(VirtualSimulator& simulator, Printer& printer) {
    for (std::string line; std::getline(std::cin, line);) {
        std::string error;
        switch (runConsoleCommand(simulator, line, error)) {
        case ConsoleOutcome::Done:
            break;
        case ConsoleOutcome::Help:
            printer.print(noticeAsJson("help", consoleHelp()));
            break;
        case ConsoleOutcome::BadCommand:
            printer.print(noticeAsJson("error", error));
            break;
        case ConsoleOutcome::Exit:
            return true;
        }
    }
    return false;
}

int run(const SimulatorOptions& options) {
    const auto begin = std::chrono::steady_clock::now();
    Printer printer;
    VirtualSimulator simulator({.moduleInstalled = !options.moduleMissing});
    simulator.setModuleAnswers(options.answers);
    std::string error;
    simulator.setRecordCallback([&](const SimulatorRecord& record) { printer.print(recordAsJson(record, begin)); });
    const bool started = printer.printFirst([&] {
        const bool listening = options.pipe ? simulator.startOnPipe(*options.pipe, error)
                                            : simulator.start(options.port.value_or(defaultPort), error);
        return listening ? listeningAsJson(simulator.endpoint()) : std::string();
    });
    if (!started) {
        std::cerr << error << '\n';
        return 1;
    }
    const bool exit = readCommands(simulator, printer);
    while (options.keep && !exit) {
        std::this_thread::sleep_for(std::chrono::hours(1));
    }
    simulator.stop();
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    std::string error;
    const std::optional<SimulatorOptions> options = readSimulatorOptions({argv + 1, argv + argc}, error);
    if (!options) {
        std::cerr << "virtual-simulator: " << error << " (see --help)\n";
        return 2;
    }
    if (options->help) {
        std::cout << usage << consoleHelp();
        return 0;
    }
    return run(*options);
}
