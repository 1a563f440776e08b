#include "simulation/scenarios/scenario_line.h"

#include "hid/hex_text.h"
#include "simulation/scenarios/nearest_word.h"
#include "text/ascii.h"
#include "text/wording.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace {

constexpr std::string_view blanks = " \t";

std::optional<double> decimalNumber(const std::string& text) {
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

} // namespace

ScenarioLine::ScenarioLine(std::string_view text, std::size_t lineNumber)
    : text(rightTrimmed(text, " \t\r")), lineNumber(lineNumber) {
    skipBlanks();
}

std::string ScenarioLine::whole() const {
    return std::string(trimmed(text, blanks));
}

bool ScenarioLine::atEnd() const {
    return next >= text.size();
}

std::string_view ScenarioLine::peek() const {
    return std::string_view(text).substr(next, text.find_first_of(blanks, next) - next);
}

std::string_view ScenarioLine::lastWordOfAll() const {
    const std::size_t blank = text.find_last_of(blanks);
    return std::string_view(text).substr(std::max(blank + 1, next));
}

void ScenarioLine::dropLastWord() {
    text.resize(text.size() - lastWordOfAll().size());
    text.resize(rightTrimmed(text, blanks).size());
    next = std::min(next, text.size());
}

std::string ScenarioLine::word(std::string_view what) {
    if (atEnd()) {
        failAtEnd("expected " + std::string(what));
    }
    std::string found(peek());
    lastWord = next;
    next += found.size();
    skipBlanks();
    return found;
}

std::string ScenarioLine::rest(std::string_view what) {
    if (atEnd()) {
        failAtEnd("expected " + std::string(what));
    }
    lastWord = next;
    next = text.size();
    return text.substr(lastWord);
}

void ScenarioLine::end() {
    if (!atEnd()) {
        lastWord = next;
        fail("didn't expect " + inQuotes(peek()) + " here: the line is complete before it");
    }
}

std::size_t ScenarioLine::choice(std::string_view what, std::span<const std::string_view> known) {
    const std::string found = word(what);
    const auto place = std::find(known.begin(), known.end(), found);
    if (place == known.end()) {
        fail(unknownWord(what, found, known));
    }
    return static_cast<std::size_t>(place - known.begin());
}

bool ScenarioLine::onOff() {
    static constexpr std::array<std::string_view, 2> known{"off", "on"};
    return choice("on or off", known) == 1;
}

long ScenarioLine::number(std::string_view what, long least, long most) {
    const std::string found = word(what);
    const std::optional<long> value = wholeNumber(found, least, most);
    if (!value) {
        fail(inQuotes(found) + " isn't a valid " + std::string(what) + ": expected a whole number from " +
             std::to_string(least) + " to " + std::to_string(most));
    }
    return *value;
}

std::chrono::milliseconds ScenarioLine::duration() {
    const std::string found = word("a time such as 60ms or 2s");
    const std::size_t unit = found.find_first_not_of("0123456789.");
    const std::optional<double> value = decimalNumber(found.substr(0, unit));
    const std::string_view unitText = unit == std::string::npos ? "" : std::string_view(found).substr(unit);
    if (!value || (unitText != "ms" && unitText != "s")) {
        fail(inQuotes(found) + " isn't a time: write it as 60ms, 2s or 1.5s");
    }
    return std::chrono::milliseconds(std::llround(unitText == "s" ? *value * 1000 : *value));
}

std::vector<std::uint8_t> ScenarioLine::hexBytes() {
    std::vector<std::uint8_t> bytes;
    do {
        const std::string digits = word("bytes as pairs of hexadecimal digits");
        const auto group = bytesFromHex(digits);
        if (!group) {
            fail(inQuotes(digits) + " isn't a sequence of bytes: expected pairs of hexadecimal digits");
        }
        bytes.insert(bytes.end(), group->begin(), group->end());
    } while (!atEnd());
    return bytes;
}

std::pair<std::string, std::string> ScenarioLine::option(std::string_view what) {
    const std::string found = word(what);
    const std::size_t equals = found.find('=');
    if (equals == std::string::npos || equals == 0) {
        fail("expected " + std::string(what) + ", written as name=value, not " + inQuotes(found));
    }
    return {found.substr(0, equals), found.substr(equals + 1)};
}

void ScenarioLine::numberOptions(std::span<NumberOption> options) {
    while (!atEnd()) {
        const auto [name, value] = option("an option");
        const auto rule =
            std::find_if(options.begin(), options.end(), [&name = name](const auto& one) { return one.name == name; });
        if (rule == options.end()) {
            std::vector<std::string_view> known(options.size());
            std::transform(options.begin(), options.end(), known.begin(), [](const auto& one) { return one.name; });
            fail(unknownWord("option", name, known));
        }
        const std::optional<long> number = wholeNumber(value, rule->least, rule->most);
        if (!number) {
            fail(inQuotes(value) + " isn't a valid value for " + name + ": expected a whole number from " +
                 std::to_string(rule->least) + " to " + std::to_string(rule->most));
        }
        rule->value = *number;
    }
}

void ScenarioLine::fail(const std::string& message) const {
    throw ScenarioFault{lineNumber, lastWord + 1, message};
}

void ScenarioLine::failAtEnd(const std::string& message) const {
    throw ScenarioFault{lineNumber, text.size() + 1, message};
}

void ScenarioLine::skipBlanks() {
    next = std::min(text.find_first_not_of(blanks, next), text.size());
}

std::string unknownWord(std::string_view what, std::string_view word, std::span<const std::string_view> known) {
    std::string message = "unknown " + std::string(what) + ' ' + inQuotes(word);
    if (const std::optional<std::string_view> nearest = nearestWord(word, known)) {
        return message + "; did you mean " + inQuotes(*nearest) + '?';
    }
    return message + "; known: " + listText(known);
}

std::optional<long> wholeNumber(std::string_view text, long least, long most) {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
    }
    long value = 0;
    const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (code != std::errc() || end != text.data() + text.size() || value < least || value > most) {
        return std::nullopt;
    }
    return value;
}
