#include "simulation/scenarios/scenario_player.h"

#include "config/app_config.h"
#include "hid/hid_log_lines.h"
#include "simulation/scenarios/scenario_configuration.h"

#include <algorithm>
#include <set>
#include <thread>

namespace {

using namespace std::chrono_literals;

/// How long what is expected may take to come; nothing healthy comes near it.
constexpr std::chrono::milliseconds expectationLimit = 30000ms;
/// How long a session with its handshake may take, after the bridge's own long waits.
constexpr std::chrono::milliseconds connectLimit = 30000ms;
/// After so long without anything new, what has come in full number but wrong won't become right any more.
constexpr std::chrono::milliseconds wrongTime = 1000ms;
/// How long nothing more may come for a block to be taken as complete.
constexpr std::chrono::milliseconds quietTime = 80ms;
/// The same where the scenario says that nothing comes.
constexpr std::chrono::milliseconds nothingTime = 150ms;
/// A stream that never falls silent is cut here.
constexpr std::chrono::milliseconds quietLimit = 1500ms;
/// How long the bridge may take over an event of a board. One that it drops on purpose is waited for as long.
constexpr std::chrono::milliseconds eventLimit = 2000ms;
constexpr std::chrono::milliseconds pollTime = 2ms;

constexpr std::string_view registration = "command MF.Clients.Add.";
constexpr std::string_view subscription = "command MF.SimVars.Add.";
constexpr const char* refusedLine = "WARN Waiting for SimConnect connection: ";

/// A setting of the scenario's configuration; `otherwise` when it has none.
std::int32_t setting(const Scenario& scenario, std::string_view section, std::string_view key, std::int32_t otherwise) {
    const JsonValue settings = scenarioSettings(scenario);
    const JsonValue* members = nullptr;
    std::int32_t value = otherwise;
    if (getObject(settings, section, members)) {
        getInt(*members, key, value);
    }
    return value;
}

std::chrono::milliseconds debounceOf(const Scenario& scenario) {
    return std::chrono::milliseconds(std::max(setting(scenario, "outputs", "debounceMs", 0), 0));
}

/// The code that the cockpit light follows.
std::string lightCode(const Scenario& scenario) {
    const JsonValue settings = scenarioSettings(scenario);
    const JsonValue* extensions = nullptr;
    std::string code = ExtensionsConfig().lightVariable;
    if (getObject(settings, "extensions", extensions)) {
        getString(*extensions, "lightVariable", code);
    }
    return code;
}

/// What the last line of a session's start begins with.
std::string_view sessionEnd(const Scenario& scenario, bool moduleRunning, bool withModule) {
    if (!moduleRunning || setting(scenario, "mobiflight", "enabled", 1) == 0) {
        return "opened ";
    }
    return withModule ? subscription : registration;
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

/// Streams whose last expectation takes any number: they need not fall silent.
std::vector<std::string> openStreams(const ScenarioBlock& block) {
    std::map<std::string, std::size_t> last;
    for (const ScenarioExpectation& one : block.expected) {
        last[one.stream] = one.most;
    }
    std::vector<std::string> open;
    for (const auto& [stream, most] : last) {
        if (most == std::numeric_limits<std::size_t>::max()) {
            open.push_back(stream);
        }
    }
    return open;
}

bool containsAny(const std::string& text, const std::vector<std::string>& parts) {
    return std::any_of(parts.begin(), parts.end(),
                       [&text](const std::string& part) { return text.find(part) != std::string::npos; });
}

} // namespace

ScenarioPlayer::ScenarioPlayer(const Scenario& played, bool fast, std::ostream& output)
    : scenario(played),
      playedFast(fast),
      out(output),
      columns(output),
      virtualCockpit(played, fast ? CockpitPace::fast() : CockpitPace::real()),
      lastItem(std::chrono::steady_clock::now()) {}

bool ScenarioPlayer::play() {
    std::string error;
    if (!virtualCockpit.setUp(error)) {
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
    pump();
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
    waitForEvents();
    pumpUntil([&] { return isMet(block) || isWrong(block); }, expectationLimit);
    waitForQuiet(block.expected.empty() ? nothingTime : quietTime, openStreams(block));
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

/// As much has come as is expected, but something else.
bool ScenarioPlayer::isWrong(const ScenarioBlock& block) {
    const auto enough = [&](const ScenarioExpectation& one) {
        return pending[one.stream].size() >= leastCount(ofStream(block, one.stream));
    };
    return std::chrono::steady_clock::now() - lastItem >= wrongTime &&
           std::all_of(block.expected.begin(), block.expected.end(), enough);
}

/// What came after the last expectation is as unexpected as anything else.
bool ScenarioPlayer::meetEnd() {
    ScenarioBlock end;
    const ScenarioStep* last = scenario.steps.empty() ? nullptr : &scenario.steps.back();
    if (last != nullptr && std::holds_alternative<ScenarioBlock>(*last)) {
        return true;
    }
    if (last != nullptr) {
        end.line = std::get<ScenarioInput>(*last).line;
    }
    waitForEvents();
    waitForQuiet(quietTime, {});
    return compare(end);
}

void ScenarioPlayer::sendEvent(const std::string& board, const HidProtocol::HidEvent& event) {
    if (virtualCockpit.bridge().running() && virtualCockpit.plugged(board)) {
        ++eventsSent;
    }
    virtualCockpit.board(board).sendEvent(event);
}

void ScenarioPlayer::connect(bool withModule) {
    const auto plugged = [this](const ScenarioBoard& board) { return virtualCockpit.plugged(board.name); };
    if (std::none_of(scenario.boards.begin(), scenario.boards.end(), plugged)) {
        for (const ScenarioBoard& board : scenario.boards) {
            virtualCockpit.plug(board.name);
        }
    }
    if (!virtualCockpit.bridge().started()) {
        virtualCockpit.startBridge();
    }
    if (!virtualCockpit.simulatorRunning()) {
        virtualCockpit.startSimulator();
    }
    const std::string_view last = sessionEnd(scenario, virtualCockpit.simulator().moduleRunning(), withModule);
    const bool tellsState = setting(scenario, "logging", "debug", 0) != 0;
    // The module doesn't write a value that is 0 from the start.
    const bool tellsLight =
        tellsState && last == subscription && virtualCockpit.simulator().evaluate(lightCode(scenario)) != 0;
    const auto up = [&] {
        return handshakeSeen(last) && (batteryTold || !tellsState) && (lightTold || !tellsLight) && boardsTold();
    };
    if (!pumpUntil(up, connectLimit)) {
        fail("no session came about");
        return;
    }
    waitForQuiet(quietTime + debounceOf(scenario), {});
    takeAsRead();
    batteryTold = false;
    lightTold = false;
}

void ScenarioPlayer::wait(std::chrono::milliseconds duration) {
    pumpUntil([] { return false; }, duration);
}

void ScenarioPlayer::pause(std::chrono::milliseconds duration) {
    if (!playedFast) {
        wait(duration);
    }
}

void ScenarioPlayer::fail(const std::string& reason) {
    failure = reason;
}

void ScenarioPlayer::pump() {
    for (const CockpitItem& item : virtualCockpit.takeItems()) {
        take(item);
    }
}

void ScenarioPlayer::take(const CockpitItem& item) {
    if (item.stream == "log") {
        takeLogLine(item);
        return;
    }
    lastItem = item.time;
    pending[item.stream].push_back(item.text);
    const bool fromBoard = item.stream != "sim" && item.stream != "exit";
    if (fromBoard) {
        columns.left(item.time, item.stream + ' ' + item.text);
    } else {
        columns.right(item.time, item.stream + ' ' + item.text);
    }
}

void ScenarioPlayer::takeLogLine(const CockpitItem& item) {
    if (readHidEventLine(item.text)) {
        ++eventsHandled;
    } else if (item.text.starts_with("DEBUG State update: master battery")) {
        batteryTold = true;
    } else if (item.text.starts_with("DEBUG State update: backlight")) {
        lightTold = true;
    }
    if (watchesLogLine(item.text)) {
        lastItem = item.time;
        pending["log"].push_back(item.text);
        columns.right(item.time, "log " + item.text);
    }
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

bool ScenarioPlayer::pumpUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    pump();
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(pollTime);
        pump();
    }
    return true;
}

/// Until the bridge has worked off what the boards sent, so that "nothing" isn't said too early. Events that it drops
/// on purpose are given up after a while.
void ScenarioPlayer::waitForEvents() {
    pumpUntil([this] { return eventsHandled >= eventsSent || !virtualCockpit.bridge().running(); }, eventLimit);
    eventsSent = eventsHandled;
}

void ScenarioPlayer::waitForQuiet(std::chrono::milliseconds quiet, const std::vector<std::string>& open) {
    if (open.empty()) {
        lastItem = std::chrono::steady_clock::now();
    }
    pumpUntil([&] { return std::chrono::steady_clock::now() - lastItem >= quiet; }, open.empty() ? quietLimit : quiet);
}

bool ScenarioPlayer::handshakeSeen(std::string_view lastLine) const {
    const auto stream = pending.find("sim");
    if (stream == pending.end()) {
        return false;
    }
    const auto begins = [](std::string_view start) {
        return [start](const std::string& text) { return text.starts_with(start); };
    };
    const std::vector<std::string>& texts = stream->second;
    const auto opened = std::find_if(texts.begin(), texts.end(), begins("opened "));
    return std::any_of(opened, texts.end(), begins(lastLine));
}

bool ScenarioPlayer::boardsTold() const {
    const std::vector<std::string> names = virtualCockpit.usableBoards();
    return std::all_of(names.begin(), names.end(), [this](const std::string& name) {
        const VirtualBoard& board = virtualCockpit.board(name);
        return board.simConnected().value_or(false) && board.led();
    });
}

/// Warnings and errors are no part of a session's start, but for those of the sessions refused before it.
void ScenarioPlayer::takeAsRead() {
    for (auto& [stream, texts] : pending) {
        if (stream == "log") {
            std::erase_if(texts, [](const std::string& text) { return text.starts_with(refusedLine); });
        } else if (stream != "exit") {
            texts.clear();
        }
    }
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
    bool same = true;
    for (const std::string& stream : streams) {
        const std::vector<ScenarioExpectation> expected = ofStream(block, stream);
        if (!meets(expected, pending[stream])) {
            printDifference(expected.empty() ? block.line : expected.front().line, stream, expected);
            same = false;
        }
        pending[stream].clear();
    }
    batteryTold = false;
    lightTold = false;
    return same;
}

void ScenarioPlayer::printDifference(std::size_t line, const std::string& stream,
                                     const std::vector<ScenarioExpectation>& expected) const {
    out << scenario.path << ':' << line << ": \"" << stream << "\" isn't as expected\n";
    for (const std::string& row : sideBySide(expected, pending.at(stream))) {
        out << "    " << row << '\n';
    }
}
