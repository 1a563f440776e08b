#include "simulation/scenarios/scenario_player.h"

#include "hid/hid_log_lines.h"
#include "simulation/scenarios/scenario_configuration.h"

#include <algorithm>
#include <set>

namespace {

using namespace std::chrono_literals;

/// How long expected events may take; a working bridge is far faster.
constexpr std::chrono::milliseconds expectationLimit = 30000ms;
/// How long a session with its handshake may take, after the bridge's own long waits.
constexpr std::chrono::milliseconds connectLimit = 30000ms;
/// How long it must be quiet before a block is complete.
constexpr std::chrono::milliseconds quietTime = 80ms;
/// The same where the scenario expects nothing.
constexpr std::chrono::milliseconds nothingTime = 150ms;
/// A stream that never becomes quiet is cut here.
constexpr std::chrono::milliseconds quietLimit = 1500ms;
/// How long the bridge may need for an event of a board that changes nothing.
constexpr std::chrono::milliseconds eventLimit = 30000ms;
/// The same where all that was expected has come. The bridge drops some events on purpose, so they are never handled.
constexpr std::chrono::milliseconds droppedTime = 2000ms;

constexpr const char* refusedLine = "WARN Waiting for SimConnect connection: ";

std::chrono::milliseconds debounceOf(const Scenario& scenario) {
    return std::chrono::milliseconds(std::max(scenarioSetting(scenario, "outputs", "debounceMs", 0), 0));
}

std::vector<ScenarioExpectation> ofStream(const ScenarioBlock& block, const std::string& stream) {
    std::vector<ScenarioExpectation> found;
    std::copy_if(block.expected.begin(), block.expected.end(), std::back_inserter(found),
                 [&stream](const auto& one) { return one.stream == stream; });
    return found;
}

std::size_t leastCount(const std::vector<ScenarioExpectation>& expected) {
    std::size_t count = 0;
    for (const ScenarioExpectation& one : expected) {
        count += one.least;
    }
    return count;
}

/// Whether further texts after these could make them match the expectations.
bool couldMeet(std::vector<ScenarioExpectation> expected, const std::vector<std::string>& begun) {
    while (!expected.empty()) {
        expected.back().least = 0;
        if (meets(expected, begun)) {
            return true;
        }
        expected.pop_back();
    }
    return begun.empty();
}

/// Whether a stream's last expectation takes any number.
bool hasOpenStream(const ScenarioBlock& block) {
    std::map<std::string, std::size_t> last;
    for (const ScenarioExpectation& one : block.expected) {
        last[one.stream] = one.most;
    }
    return std::any_of(last.begin(), last.end(),
                       [](const auto& one) { return one.second == std::numeric_limits<std::size_t>::max(); });
}

bool containsAny(const std::string& text, const std::vector<std::string>& parts) {
    return std::any_of(parts.begin(), parts.end(),
                       [&text](const std::string& part) { return text.find(part) != std::string::npos; });
}

} // namespace

ScenarioPlayer::ScenarioPlayer(const Scenario& scenario, bool fast, std::ostream& out)
    : scenario(scenario),
      fast(fast),
      out(out),
      columns(out),
      bridgeRig(rigSettings(scenario, fast ? Pace::fast() : Pace::real())),
      observer(
          bridgeRig, [this](const Observation& item) { return take(item); }, scenario.watch.dummies),
      sessionStart(scenario, bridgeRig) {}

bool ScenarioPlayer::play() {
    std::string error;
    if (!bridgeRig.setUp(error)) {
        out << scenario.path << ": " << error << '\n';
        return false;
    }
    const bool passed = playSteps();
    columns.flush();
    return passed;
}

bool ScenarioPlayer::playSteps() {
    for (const ScenarioStep& step : scenario.steps) {
        const auto* input = std::get_if<ScenarioInput>(&step);
        const bool done = input != nullptr ? doInput(*input) : meetBlock(std::get<ScenarioBlock>(step));
        if (!done) {
            return false;
        }
    }
    return meetEnd();
}

bool ScenarioPlayer::doInput(const ScenarioInput& input) {
    observer.pump();
    if (input.remark.empty()) {
        columns.left(std::chrono::steady_clock::now(), "> " + input.text);
    } else {
        columns.remark(input.remark);
    }
    input.apply(*this);
    if (!failure.empty()) {
        columns.flush();
        out << scenario.path << ':' << input.line << ": " << failure << '\n';
        return false;
    }
    return true;
}

bool ScenarioPlayer::meetBlock(const ScenarioBlock& block) {
    observer.pumpUntil([&] { return isMet(block) || isWrong(block); }, expectationLimit);
    waitForEvents(block);
    if (hasOpenStream(block)) {
        // It need not become quiet.
        observer.pumpUntil([&] { return observer.quietFor(quietTime); }, quietTime);
    } else {
        waitForQuiet(block.expected.empty() ? nothingTime : quietTime);
    }
    if (!compare(block)) {
        return false;
    }
    met += std::max<std::size_t>(block.expected.size(), 1);
    return true;
}

bool ScenarioPlayer::isMet(const ScenarioBlock& block) {
    return std::all_of(block.expected.begin(), block.expected.end(), [&](const ScenarioExpectation& one) {
        return meets(ofStream(block, one.stream), pending[one.stream]);
    });
}

/// The expected number of results has come, but nothing that follows could make them the expected ones.
bool ScenarioPlayer::isWrong(const ScenarioBlock& block) {
    const auto enough = [&](const ScenarioExpectation& one) {
        return pending[one.stream].size() >= leastCount(ofStream(block, one.stream));
    };
    const auto mismatched = [&](const ScenarioExpectation& one) {
        return !couldMeet(ofStream(block, one.stream), pending[one.stream]);
    };
    return std::all_of(block.expected.begin(), block.expected.end(), enough) &&
           std::any_of(block.expected.begin(), block.expected.end(), mismatched);
}

/// Anything after the last expectation is unexpected too.
bool ScenarioPlayer::meetEnd() {
    ScenarioBlock end;
    const ScenarioStep* last = scenario.steps.empty() ? nullptr : &scenario.steps.back();
    if (last != nullptr && std::holds_alternative<ScenarioBlock>(*last)) {
        return true;
    }
    if (last != nullptr) {
        end.line = std::get<ScenarioInput>(*last).line;
    }
    waitForEvents(end);
    waitForQuiet(quietTime);
    return compare(end);
}

void ScenarioPlayer::sendEvent(const std::string& board, const HidProtocol::HidEvent& event) {
    if (bridgeRig.bridge().running() && bridgeRig.plugged(board)) {
        ++eventsSent;
    }
    bridgeRig.board(board).sendEvent(event);
}

void ScenarioPlayer::connect(bool withModule) {
    const auto plugged = [this](const RigBoard& board) { return bridgeRig.plugged(board.name); };
    if (std::none_of(scenario.boards.begin(), scenario.boards.end(), plugged)) {
        bridgeRig.plugAll();
    }
    if (!bridgeRig.bridge().started()) {
        bridgeRig.startBridge();
    }
    if (!bridgeRig.simulatorRunning()) {
        bridgeRig.startSimulator();
    }
    if (!observer.pumpUntil([&] { return sessionStart.isComplete(withModule); }, connectLimit)) {
        fail("no session was opened");
        return;
    }
    waitForQuiet(quietTime + debounceOf(scenario));
    takeAsRead();
}

void ScenarioPlayer::wait(std::chrono::milliseconds duration) {
    observer.pumpFor(duration);
}

void ScenarioPlayer::pause(std::chrono::milliseconds duration) {
    if (!fast) {
        wait(duration);
    }
}

void ScenarioPlayer::fail(const std::string& reason) {
    failure = reason;
}

bool ScenarioPlayer::take(const Observation& item) {
    sessionStart.note(item);
    if (item.stream == "log") {
        return takeLogLine(item);
    }
    pending[item.stream].push_back(item.text);
    const bool fromBoard = item.stream != "sim" && item.stream != "exit";
    if (fromBoard) {
        columns.left(item.time, item.stream + ' ' + item.text);
    } else {
        columns.right(item.time, item.stream + ' ' + item.text);
    }
    return true;
}

bool ScenarioPlayer::takeLogLine(const Observation& item) {
    if (readHidEventLine(item.text)) {
        ++eventsHandled;
    }
    if (!watchesLogLine(item.text)) {
        return false;
    }
    pending["log"].push_back(item.text);
    columns.right(item.time, "log " + item.text);
    return true;
}

bool ScenarioPlayer::watchesLogLine(const std::string& line) const {
    if (line.starts_with("DEBUG ")) {
        return containsAny(line, scenario.watch.debugTexts);
    }
    if (line.starts_with("INFO ")) {
        return containsAny(line, scenario.watch.infoTexts);
    }
    return true;
}

/// Waits until the bridge has handled what the boards sent, so that "nothing" isn't true too early.
void ScenarioPlayer::waitForEvents(const ScenarioBlock& block) {
    const bool expectsNothing = block.expected.empty() && !scenario.unchecked;
    // The log's debug lines show which events are handled.
    const bool eventsLogged = scenarioSetting(scenario, "logging", "debug", 0) != 0;
    observer.pumpUntil([this] { return eventsHandled >= eventsSent || !bridgeRig.bridge().running(); },
                       expectsNothing && eventsLogged ? eventLimit : droppedTime);
    eventsSent = eventsHandled;
}

void ScenarioPlayer::waitForQuiet(std::chrono::milliseconds quiet) {
    observer.waitForQuiet(quiet, quietLimit);
}

/// Warnings and errors aren't part of a session's start, except those of sessions that were refused before it.
void ScenarioPlayer::takeAsRead() {
    for (auto& [stream, texts] : pending) {
        if (stream == "log") {
            std::erase_if(texts, [](const std::string& text) { return text.starts_with(refusedLine); });
        } else if (stream != "exit") {
            texts.clear();
        }
    }
    sessionStart.forget();
}

bool ScenarioPlayer::compare(const ScenarioBlock& block) {
    std::set<std::string> streams;
    for (const ScenarioExpectation& one : block.expected) {
        streams.insert(one.stream);
    }
    for (const auto& [stream, texts] : pending) {
        streams.insert(stream);
    }
    columns.flush();
    if (scenario.unchecked) {
        pending.clear();
        return true;
    }
    bool same = true;
    for (const std::string& stream : streams) {
        const std::vector<ScenarioExpectation> expected = ofStream(block, stream);
        if (!meets(expected, pending[stream])) {
            printDifference(expected.empty() ? block.line : expected.front().line, stream, expected);
            same = false;
        }
        pending[stream].clear();
    }
    sessionStart.forget();
    return same;
}

void ScenarioPlayer::printDifference(std::size_t line, const std::string& stream,
                                     const std::vector<ScenarioExpectation>& expected) const {
    out << scenario.path << ':' << line << ": \"" << stream << "\" isn't as expected\n";
    for (const std::string& row : sideBySide(expected, pending.at(stream))) {
        out << "    " << row << '\n';
    }
}
