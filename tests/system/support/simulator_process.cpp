#include "tests/system/support/simulator_process.h"

#include "config/json.h"
#include "tests/support/wait_until.h"
#include "tests/system/support/bridge_process.h"
#include "tests/system/support/tested_system.h"

#include <algorithm>
#include <csignal>
#include <sstream>
#include <stdexcept>

namespace {

/// The whole lines of the output.
std::vector<SimulatorLine> linesOf(const std::string& output) {
    std::vector<SimulatorLine> result;
    std::istringstream stream(output);
    for (std::string text; std::getline(stream, text) && !stream.eof();) {
        const JsonParseResult object = JsonParser::parse(text);
        if (!object.ok) {
            throw std::runtime_error("the simulator printed no JSON: " + text);
        }
        SimulatorLine& line = result.emplace_back();
        getString(object.value, "kind", line.kind);
        getString(object.value, "text", line.text);
        getInt(object.value, "port", line.port);
    }
    return result;
}

std::vector<std::string> textsOf(SimulatorRecordKind kind, const std::string& output) {
    std::vector<std::string> result;
    for (const SimulatorLine& line : linesOf(output)) {
        if (line.kind == simulatorRecordKindName(kind)) {
            result.push_back(line.text);
        }
    }
    return result;
}

} // namespace

SimulatorProcess::SimulatorProcess() {
    installProgram(TestedSystem::simulator(), folder.path("FlightSimulator.exe"));
    start();
}

void SimulatorProcess::start() {
    commandsGiven = 0;
    // On a busy machine, Wine frees the port of a killed program a while later.
    if (!waitUntil([this] { return launch(); }, ChildProcess::defaultLimit)) {
        throw std::runtime_error("the simulator doesn't listen: " + child->output() + child->errorOutput());
    }
}

bool SimulatorProcess::launch() {
    const std::vector<std::string> arguments =
        TestedSystem::overPipe() ? std::vector<std::string>{"--pipe"}
                                 : std::vector<std::string>{"--port", std::to_string(listeningPort.value_or(0))};
    child = std::make_unique<ChildProcess>(
        ChildProcessSettings{TestedSystem::command(folder.path("FlightSimulator.exe"), arguments)});
    child->waitForOutput([](const std::string& output) { return countOf(output, "\n") > 0; });
    const std::vector<SimulatorLine> first = lines();
    if (first.empty() || first[0].kind != "listening") {
        return false;
    }
    if (!TestedSystem::overPipe()) {
        listeningPort = static_cast<std::uint16_t>(first[0].port);
    }
    return true;
}

void SimulatorProcess::command(std::string_view line) {
    child->writeLine(line);
    // It takes its commands one after the other, so the answer to this one comes behind the effect of that one.
    child->writeLine("help");
    ++commandsGiven;
    const bool done = child->waitForOutput([this](const std::string& output) {
        const std::vector<SimulatorLine> all = linesOf(output);
        const auto answers =
            std::count_if(all.begin(), all.end(), [](const SimulatorLine& one) { return one.kind == "help"; });
        return answers >= static_cast<std::ptrdiff_t>(commandsGiven);
    });
    if (!done) {
        throw std::runtime_error("the simulator takes no command: " + std::string(line));
    }
}

void SimulatorProcess::kill() {
    child->sendSignal(SIGKILL);
    child->waitForExit();
}

std::vector<SimulatorLine> SimulatorProcess::lines() const {
    return linesOf(child->output());
}

std::vector<std::string> SimulatorProcess::texts(SimulatorRecordKind kind) const {
    return textsOf(kind, child->output());
}

bool SimulatorProcess::waitFor(SimulatorRecordKind kind, std::string_view text, std::size_t count) const {
    return child->waitForOutput([&](const std::string& output) {
        const std::vector<std::string> all = textsOf(kind, output);
        return std::count(all.begin(), all.end(), text) >= static_cast<std::ptrdiff_t>(count);
    });
}
