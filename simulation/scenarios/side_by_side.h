#pragma once

// Two columns of text: what was expected beside what came, and what boards do beside what the simulator receives.

#include "simulation/scenarios/scenario_file.h"

#include <chrono>
#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

/// Whether the texts are equal. With `globs`, a "*" in `pattern` matches any text.
bool textMatches(std::string_view pattern, std::string_view text, bool globs);

/// Whether the texts match the expectations in order, with nothing left over. An expectation takes as many texts as it
/// may.
bool meets(const std::vector<ScenarioExpectation>& expected, const std::vector<std::string>& actual);

/// "rpn (>K:X)", "rpn (>K:X) x3", "rpn (>K:X) x2+", "rpn (>K:X) x0..1".
std::string expectationText(const ScenarioExpectation& expectation);

/// The lines "expected | actual", with a mark between them: blank where they agree, "|" where both differ, "<" and ">"
/// where only one side has something. Repeated texts are one line with their count.
std::vector<std::string> sideBySide(const std::vector<ScenarioExpectation>& expected,
                                    const std::vector<std::string>& actual);

/// Prints what happens, as it happens: time, what is done and what the boards show on the left, what the simulator
/// receives and the log's warnings on the right. A repeated text is printed once, then counted.
class LiveColumns {
public:
    explicit LiveColumns(std::ostream& out);

    void left(std::chrono::steady_clock::time_point time, const std::string& text);
    void right(std::chrono::steady_clock::time_point time, const std::string& text);
    /// Text for people who watch, across both columns.
    void remark(const std::string& text);
    /// Prints the count of a repeated text, if one is pending.
    void flush();

private:
    std::ostream& out;
    std::chrono::steady_clock::time_point start;
    std::string lastRight;
    std::size_t repeats = 0;
    std::chrono::steady_clock::time_point lastTime;

    void line(std::chrono::steady_clock::time_point time, const std::string& left, const std::string& right);
};
