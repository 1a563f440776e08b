#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Why a scenario can't be read, and where; both counted from 1. Thrown inside the parser only.
struct ScenarioFault {
    std::size_t line = 1;
    std::size_t column = 1;
    std::string message;
};

/// A whole number written as `name=5`.
struct NumberOption {
    std::string_view name;
    long least;
    long most;
    long value;
};

/// One line of a scenario, read word by word. An invalid word is thrown as a ScenarioFault that points at it.
class ScenarioLine {
public:
    ScenarioLine(std::string_view text, std::size_t lineNumber);

    /// The whole line without the blanks at its ends.
    std::string whole() const;
    bool atEnd() const;
    /// The next word without taking it; empty at the end.
    std::string_view peek() const;

    /// The last word of the rest of the line, and the rest without that word.
    std::string_view lastWordOfAll() const;
    void dropLastWord();

    /// The next word; if there is none, the message says that `what` is missing.
    std::string word(std::string_view what);
    /// The rest of the line, which must not be empty.
    std::string rest(std::string_view what);
    /// Fails unless the line is at its end.
    void end();

    /// The next word, which must be one of these.
    std::size_t choice(std::string_view what, std::span<const std::string_view> known);
    bool onOff();
    long number(std::string_view what, long least, long most);
    /// Such as 60ms, 2s or 1.5s.
    std::chrono::milliseconds duration();
    /// Pairs of hexadecimal digits, in groups or not, to the end of the line.
    std::vector<std::uint8_t> hexBytes();
    /// The next word cut at its "=".
    std::pair<std::string, std::string> option(std::string_view what);
    /// All `name=number` words to the end of the line, over the values that are there.
    void numberOptions(std::span<NumberOption> options);

    /// Points at the word that was read last.
    [[noreturn]] void fail(const std::string& message) const;
    [[noreturn]] void failAtEnd(const std::string& message) const;

private:
    std::string text;
    std::size_t lineNumber;
    std::size_t next = 0;
    std::size_t lastWord = 0;

    void skipBlanks();
};

/// "unknown step "pres"; did you mean "press"?", or the list of what is known.
std::string unknownWord(std::string_view what, std::string_view word, std::span<const std::string_view> known);

/// A whole decimal number within bounds; none when the text is anything else.
std::optional<long> wholeNumber(std::string_view text, long least, long most);
