#pragma once

// Questions about ASCII letters and white space, as the C locale answers them: written out here, because a locale that
// other code sets must not change what a name or a file means. Other bytes are neither letters nor white space.

#include <algorithm>
#include <string>
#include <string_view>

constexpr std::string_view asciiSpace = " \t\n\v\f\r";

constexpr bool isSpace(char byte) {
    return asciiSpace.find(byte) != std::string_view::npos;
}

constexpr char toLower(char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

constexpr char toUpper(char byte) {
    return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
}

constexpr bool sameLetter(char left, char right) {
    return toLower(left) == toLower(right);
}

constexpr bool equalsIgnoringCase(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), sameLetter);
}

std::string lowerCased(std::string_view text);
std::string upperCased(std::string_view text);

/// The text without the blanks at its end.
constexpr std::string_view rightTrimmed(std::string_view text, std::string_view blanks = asciiSpace) {
    // npos + 1 is 0: nothing is left of a text of blanks alone.
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

/// The text without the blanks at its ends.
constexpr std::string_view trimmed(std::string_view text, std::string_view blanks = asciiSpace) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return rightTrimmed(text, blanks);
}
