#include "simulation/scenarios/side_by_side.h"

#include "text/ascii.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>

namespace {

constexpr std::size_t leftWidth = 56;
constexpr std::size_t narrowest = 8;

struct Run {
    std::string text;
    std::size_t count = 1;
};

std::vector<Run> runsOf(const std::vector<std::string>& texts) {
    std::vector<Run> runs;
    for (const std::string& text : texts) {
        if (!runs.empty() && runs.back().text == text) {
            ++runs.back().count;
        } else {
            runs.push_back({text, 1});
        }
    }
    return runs;
}

std::string runText(const Run& run) {
    return run.count == 1 ? run.text : run.text + " x" + std::to_string(run.count);
}

bool accepts(const ScenarioExpectation& expectation, const std::string& text) {
    return textMatches(expectation.text, text, expectation.stream == "log");
}

bool agrees(const ScenarioExpectation& expectation, const Run& run) {
    return accepts(expectation, run.text) && run.count >= expectation.least && run.count <= expectation.most;
}

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

std::string row(const std::string& left, char mark, const std::string& right, std::size_t width) {
    return std::string(rightTrimmed(padded(left, width) + ' ' + mark + ' ' + right, " "));
}

/// The longest run of agreements in order; `[i][j]` is its length from expectation i and run j on.
std::vector<std::vector<std::size_t>> agreementTable(const std::vector<ScenarioExpectation>& expected,
                                                     const std::vector<Run>& actual) {
    std::vector<std::vector<std::size_t>> table(expected.size() + 1, std::vector<std::size_t>(actual.size() + 1));
    for (std::size_t i = expected.size(); i-- > 0;) {
        for (std::size_t j = actual.size(); j-- > 0;) {
            table[i][j] =
                agrees(expected[i], actual[j]) ? table[i + 1][j + 1] + 1 : std::max(table[i + 1][j], table[i][j + 1]);
        }
    }
    return table;
}

} // namespace

bool textMatches(std::string_view pattern, std::string_view text, bool globs) {
    const std::size_t star = globs ? pattern.find('*') : std::string_view::npos;
    if (star == std::string_view::npos) {
        return pattern == text;
    }
    if (!text.starts_with(pattern.substr(0, star))) {
        return false;
    }
    for (std::size_t skipped = star; skipped <= text.size(); ++skipped) {
        if (textMatches(pattern.substr(star + 1), text.substr(skipped), globs)) {
            return true;
        }
    }
    return false;
}

bool meets(const std::vector<ScenarioExpectation>& expected, const std::vector<std::string>& actual) {
    std::size_t next = 0;
    for (const ScenarioExpectation& expectation : expected) {
        std::size_t taken = 0;
        while (next < actual.size() && taken < expectation.most && accepts(expectation, actual[next])) {
            ++taken;
            ++next;
        }
        if (taken < expectation.least) {
            return false;
        }
    }
    return next == actual.size();
}

std::string expectationText(const ScenarioExpectation& expectation) {
    if (expectation.most == std::numeric_limits<std::size_t>::max()) {
        return expectation.text + " x" + std::to_string(expectation.least) + '+';
    }
    if (expectation.least != expectation.most) {
        return expectation.text + " x" + std::to_string(expectation.least) + ".." + std::to_string(expectation.most);
    }
    return runText({expectation.text, expectation.least});
}

std::vector<std::string> sideBySide(const std::vector<ScenarioExpectation>& expected,
                                    const std::vector<std::string>& actual) {
    const std::vector<Run> runs = runsOf(actual);
    const auto table = agreementTable(expected, runs);
    std::size_t width = narrowest;
    for (const ScenarioExpectation& expectation : expected) {
        width = std::max(width, expectationText(expectation).size());
    }
    std::vector<std::string> rows{row("expected", ' ', "actual", width)};
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < expected.size() || j < runs.size()) {
        const bool bothLeft = i < expected.size() && j < runs.size();
        if (bothLeft && agrees(expected[i], runs[j])) {
            rows.push_back(row(expectationText(expected[i++]), ' ', runText(runs[j++]), width));
        } else if (bothLeft && table[i][j] == table[i + 1][j + 1]) {
            rows.push_back(row(expectationText(expected[i++]), '|', runText(runs[j++]), width));
        } else if (!bothLeft ? i < expected.size() : table[i][j] == table[i + 1][j]) {
            rows.push_back(row(expectationText(expected[i++]), '<', "", width));
        } else {
            rows.push_back(row("", '>', runText(runs[j++]), width));
        }
    }
    return rows;
}

LiveColumns::LiveColumns(std::ostream& out) : out(out), start(std::chrono::steady_clock::now()), lastTime(start) {}

void LiveColumns::left(std::chrono::steady_clock::time_point time, const std::string& text) {
    flush();
    lastRight.clear();
    line(time, text, "");
}

void LiveColumns::right(std::chrono::steady_clock::time_point time, const std::string& text) {
    lastTime = time;
    if (text == lastRight) {
        ++repeats;
        return;
    }
    flush();
    lastRight = text;
    line(time, "", text);
}

void LiveColumns::remark(const std::string& text) {
    flush();
    lastRight.clear();
    out << '\n' << text << '\n';
}

void LiveColumns::flush() {
    if (repeats > 0) {
        line(lastTime, "", repeats == 1 ? "  and once more" : "  and " + std::to_string(repeats) + " times more");
        repeats = 0;
    }
    out.flush();
}

void LiveColumns::line(std::chrono::steady_clock::time_point time, const std::string& left, const std::string& right) {
    std::array<char, 32> stamp{};
    std::snprintf(stamp.data(), stamp.size(), "%8.3f  ", std::chrono::duration<double>(time - start).count());
    out << row(stamp.data() + left, '|', right, leftWidth) << '\n';
    out.flush();
}
