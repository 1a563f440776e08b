#include "companion/check/finding_text.h"

#include "companion/json/json_text.h"
#include "text/wording.h"

#include <algorithm>

namespace {

/// A file on a single line would otherwise fill the screen.
constexpr std::size_t longestExcerpt = 100;

bool continuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// A file may contain bytes that would control the terminal.
std::string printable(std::string text) {
    std::ranges::replace_if(
        text, [](char byte) { return (byte >= 0 && byte < ' ' && byte != '\t') || byte == '\x7F'; }, '?');
    return text;
}

/// Moves back to where a character begins.
std::size_t characterAt(const std::string& line, std::size_t byte) {
    while (byte > 0 && byte < line.size() && continuesCharacter(line[byte])) {
        --byte;
    }
    return std::min(byte, line.size());
}

/// As wide as the text on the screen: tabs stay.
std::string blanksLike(std::string_view text) {
    std::string blanks;
    for (const char byte : text) {
        if (!continuesCharacter(byte)) {
            blanks += byte == '\t' ? '\t' : ' ';
        }
    }
    return blanks;
}

std::string excerpt(const Finding& finding) {
    const std::string line = printable(finding.lineText);
    const std::size_t caret = std::min(finding.caret, line.size());
    const std::size_t begin = caret <= longestExcerpt / 2 ? 0 : characterAt(line, caret - longestExcerpt / 2);
    const std::size_t end = characterAt(line, begin + longestExcerpt);
    return "  " + line.substr(begin, end - begin) + "\n  " + blanksLike(line.substr(begin, caret - begin)) + "^\n";
}

const char* colourOf(Severity severity) {
    switch (severity) {
    case Severity::Error:
        return "\033[1;31m";
    case Severity::Warning:
        return "\033[1;33m";
    case Severity::Hint:
        return "\033[1;36m";
    }
    return "";
}

std::string coloured(const std::string& text, Severity severity, bool colour) {
    return colour ? colourOf(severity) + text + "\033[0m" : text;
}

} // namespace

std::string findingText(const Finding& finding, bool colour) {
    std::string text = finding.file + ':' + std::to_string(finding.line) + ':' + std::to_string(finding.column) + ": " +
                       coloured(std::string(severityName(finding.severity)) + ':', finding.severity, colour) + ' ' +
                       printable(finding.message) + '\n';
    if (!finding.lineText.empty()) {
        text += excerpt(finding);
    }
    if (!finding.hint.empty()) {
        text += "  " + printable(finding.hint) + '\n';
    }
    return text;
}

std::string verdictText(const ConfigurationVerdict& verdict) {
    const auto count = [&](Severity severity) {
        return static_cast<std::size_t>(std::ranges::count(verdict.findings, severity, &Finding::severity));
    };
    return (verdict.bridgeStarts ? "The bridge would start: " : "The bridge would not start: ") +
           countText(count(Severity::Error), "error") + ", " + countText(count(Severity::Warning), "warning") + ", " +
           countText(count(Severity::Hint), "hint") + '\n';
}

std::string findingsJson(const Findings& findings) {
    nlohmann::ordered_json array = nlohmann::ordered_json::array();
    for (const Finding& finding : findings) {
        array.push_back({{"file", finding.file},
                         {"line", finding.line},
                         {"column", finding.column},
                         {"severity", severityName(finding.severity)},
                         {"code", finding.code},
                         {"message", finding.message},
                         {"hint", finding.hint}});
    }
    return jsonDocument(array);
}
