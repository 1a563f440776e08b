#include "companion/recording/replay_input.h"

#include "companion/recording/hid_log.h"
#include "hid/hex_text.h"
#include "hid/hid_log_lines.h"
#include "simulation/scenarios/scenario_file.h"

#include <algorithm>
#include <chrono>
#include <iterator>

namespace {

/// A pause that is longer comes from a log of several days, or from a typing mistake.
constexpr std::chrono::milliseconds longestPause = std::chrono::hours(24);
/// Times are counted up to here, which is decades.
constexpr std::int64_t latestTime = 1'000'000'000'000'000'000;

void addPause(std::int64_t& time, std::chrono::milliseconds pause) {
    const std::chrono::nanoseconds added = std::clamp(pause, std::chrono::milliseconds(0), longestPause);
    time = std::min(time + added.count(), latestTime);
}

/// As the bridge names it.
std::string loggedName(const RigBoard& board) {
    if (board.model.boardId) {
        return hexText(*board.model.boardId);
    }
    return board.model.serial.value_or(board.name);
}

void addReports(ReplayInput& input, const Scenario& scenario, const ScenarioReports& step, std::int64_t& time) {
    const auto board =
        std::ranges::find_if(scenario.boards, [&](const RigBoard& other) { return other.name == step.board; });
    for (long i = 0; i < step.times; ++i) {
        addPause(time, i == 0 ? std::chrono::milliseconds(0) : step.pause);
        const auto index = static_cast<int>(std::distance(scenario.boards.begin(), board));
        input.reports.push_back({time, loggedName(*board), index, step.bytes, {}, ""});
    }
}

bool readScenario(const std::string& path, std::string_view text, ReplayInput& input, std::string& error) {
    Scenario scenario;
    if (!parseScenario(path, text, scenario, error)) {
        return false;
    }
    std::int64_t time = 0;
    for (const ScenarioStep& step : scenario.steps) {
        const auto* const action = std::get_if<ScenarioInput>(&step);
        if (action == nullptr) {
            continue;
        }
        addPause(time, action->duration);
        if (!action->reports.board.empty() && !action->reports.bytes.empty()) {
            addReports(input, scenario, action->reports, time);
        }
    }
    return true;
}

void readLog(const std::string& path, std::string_view text, ReplayInput& input) {
    const HidLog log = parseHidLog(text);
    std::int64_t time = 0;
    std::chrono::milliseconds before{0};
    for (const HidLogReport& report : log.reports) {
        const auto index =
            static_cast<int>(std::distance(log.devices.begin(), std::ranges::find(log.devices, report.device)));
        addPause(time, report.offset - before);
        before = report.offset;
        input.reports.push_back({time, report.device, index, report.bytes, {}, ""});
    }
    for (const HidLogProblem& problem : log.problems) {
        input.problems.push_back(path + ':' + std::to_string(problem.line) + ": " + problem.text);
    }
}

} // namespace

bool readReplay(const std::string& path, std::string_view text, ReplayInput& input, std::string& error) {
    if (text.find(hidReportMark) != std::string_view::npos) {
        readLog(path, text, input);
    } else if (!readScenario(path, text, input, error)) {
        return false;
    }
    if (input.reports.empty()) {
        error = path + ": it contains no board reports; a record does, and so does a log written with --hid-trace";
    }
    return !input.reports.empty();
}
