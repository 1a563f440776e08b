#include "companion/guide/message_guide.h"

#include "companion/guide/guide_files.h"
#include "simulation/scenarios/side_by_side.h"
#include "text/ascii.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr std::array<std::string_view, 9> placeholders{"PATH", "BOARD", "REASON",  "NAME", "N",
                                                       "TEXT", "HEX",   "CONTROL", "EVENT"};

std::vector<std::string> cellsOf(std::string_view line) {
    std::vector<std::string> cells;
    line.remove_prefix(1);
    for (std::size_t end = line.find('|'); end != std::string_view::npos; end = line.find('|')) {
        cells.emplace_back(trimmed(line.substr(0, end)));
        line.remove_prefix(end + 1);
    }
    return cells;
}

/// "Config not found: PATH" becomes "Config not found: *".
std::string patternOf(std::string_view message) {
    std::string pattern;
    while (!message.empty()) {
        const std::size_t size = std::max<std::size_t>(1, std::min(message.find_first_not_of(letters), message.size()));
        const std::string_view word = message.substr(0, size);
        pattern += std::ranges::find(placeholders, word) == placeholders.end() ? word : "*";
        message.remove_prefix(size);
    }
    return pattern;
}

/// Pages write code in backquotes, which a terminal doesn't show.
std::string plainText(std::string text) {
    std::erase(text, '`');
    return text;
}

/// The columns of the table that is being read; 0 for those that it doesn't have.
struct Columns {
    std::size_t meaning = 0;
    std::size_t remedy = 0;
};

Columns columnsOf(const std::vector<std::string>& header) {
    Columns columns;
    for (std::size_t i = 1; i < header.size(); ++i) {
        if (header[i].starts_with("Meaning")) {
            columns.meaning = i;
        } else if (header[i] == "What to do") {
            columns.remedy = i;
        }
    }
    return columns;
}

/// The cell's text; "The same" is the text of the row above.
std::string cellText(const std::vector<std::string>& cells, std::size_t column, const std::string& above) {
    if (column == 0 || column >= cells.size()) {
        return "";
    }
    return cells[column] == "The same" ? above : plainText(cells[column]);
}

std::vector<std::string_view> pageLines(std::string_view page) {
    std::vector<std::string_view> lines;
    while (!page.empty()) {
        const std::size_t end = std::min(page.find('\n'), page.size());
        lines.push_back(page.substr(0, end));
        page.remove_prefix(std::min(end + 1, page.size()));
    }
    return lines;
}

} // namespace

const MessageGuide& MessageGuide::instance() {
    static const MessageGuide guide(guideFiles().at("troubleshooting.md"));
    return guide;
}

MessageGuide::MessageGuide(std::string_view page) {
    bool isInTable = false;
    Columns columns;
    MessageExplanation above;
    for (const std::string_view line : pageLines(page)) {
        const bool isRow = line.starts_with('|');
        const std::vector<std::string> cells = isRow ? cellsOf(line) : std::vector<std::string>();
        if (isRow && !isInTable) {
            columns = columnsOf(cells);
        } else if (isRow && cells.front().starts_with('`') && columns.meaning != 0) {
            above = {cellText(cells, columns.meaning, above.meaning), cellText(cells, columns.remedy, above.remedy)};
            const std::string message = plainText(cells.front());
            rows.push_back({patternOf(message), above, message.find("REASON") != std::string::npos});
        }
        isInTable = isRow;
    }
}

const MessageGuide::Row* MessageGuide::find(std::string_view message) const {
    const auto row = std::ranges::find_if(
        rows, [message](const Row& candidate) { return textMatches(candidate.pattern, message, true); });
    return row == rows.end() ? nullptr : &*row;
}

MessageExplanation MessageGuide::explain(std::string_view message) const {
    const Row* row = find(message);
    if (row == nullptr) {
        return {};
    }
    if (row->hasReason) {
        const std::string_view reason = message.substr(std::min(row->pattern.find('*'), message.size()));
        MessageExplanation explanation = explain(reason);
        if (!explanation.meaning.empty()) {
            return explanation;
        }
    }
    return row->explanation;
}
