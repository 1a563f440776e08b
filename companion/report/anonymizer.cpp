#include "companion/report/anonymizer.h"

#include "companion/report/system_identity.h"
#include "platform/file_system.h"
#include "text/ascii.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>

namespace {

bool isSeparator(char byte) {
    return byte == '/' || byte == '\\';
}

/// Whether a name could go on with this byte. Bytes beyond ASCII are letters.
bool isWordByte(char byte) {
    return (byte >= '0' && byte <= '9') || (toLower(byte) >= 'a' && toLower(byte) <= 'z') || byte == '_' ||
           byte == '-' || (static_cast<unsigned char>(byte) & 0x80U) != 0;
}

bool isWordEnd(std::string_view text, std::size_t at) {
    return at >= text.size() || !isWordByte(text[at]);
}

/// The index behind the separators at `at`: JSON doubles a backslash.
std::size_t behindSeparators(std::string_view text, std::size_t at) {
    while (at < text.size() && isSeparator(text[at])) {
        ++at;
    }
    return at;
}

/// The index behind `name` if the text has it at `at`; any separators match any others.
std::optional<std::size_t> behindName(std::string_view text, std::size_t at, std::string_view name) {
    for (std::size_t i = 0; i < name.size();) {
        if (at >= text.size()) {
            return std::nullopt;
        }
        if (isSeparator(name[i]) && isSeparator(text[at])) {
            i = behindSeparators(name, i);
            at = behindSeparators(text, at);
        } else if (sameLetter(text[at], name[i])) {
            ++i;
            ++at;
        } else {
            return std::nullopt;
        }
    }
    return at;
}

/// The same, for a name that must end there.
std::optional<std::size_t> behindWord(std::string_view text, std::size_t at, std::string_view name) {
    const std::optional<std::size_t> end = behindName(text, at, name);
    return end && isWordEnd(text, *end) ? end : std::nullopt;
}

/// The same, for a folder, whose name could go on with a dot, for example.
std::optional<std::size_t> behindFolder(std::string_view text, std::size_t at, std::string_view folder) {
    constexpr std::string_view ends = "/\\\"'<>|:;,) \t\r\n";
    const std::optional<std::size_t> end = behindName(text, at, folder);
    const bool endsThere = end && (*end == text.size() || ends.find(text[*end]) != std::string_view::npos);
    return endsThere ? end : std::nullopt;
}

/// The first match of `behind`, which is one of the functions above.
template <typename Behind>
std::optional<std::size_t> behindAny(std::string_view text, std::size_t at, const std::vector<std::string>& names,
                                     Behind behind) {
    for (const std::string& name : names) {
        if (const std::optional<std::size_t> end = behind(text, at, name)) {
            return end;
        }
    }
    return std::nullopt;
}

/// Where a folder's name that begins at `at` ends. Better too much than too little: blanks belong to it unless
/// a mark behind them ends the path, and quotes and commas if the path may go on behind them.
std::size_t folderNameEnd(std::string_view text, std::size_t at) {
    const std::string_view line = text.substr(0, text.find_first_of("\r\n", at));
    const std::size_t end = std::min(line.find_first_of("/\\\"<>|:", at), line.size());
    const bool hasSeparator = line.find_first_of("/\\", at) != std::string_view::npos;
    const bool isQuoted = end < line.size() && line[end] == '"';
    const std::size_t hardEnd = hasSeparator || isQuoted ? end : std::min(line.find_first_of("',;", at), end);
    const bool mayHaveBlanks =
        hardEnd == line.size() || std::string_view("/\\\"<>|").find(line[hardEnd]) != std::string_view::npos;
    return mayHaveBlanks ? hardEnd : std::min(line.find_first_of(" \t)", at), hardEnd);
}

/// Where the name of a user's folder ends if one begins at `at`, behind "Users" or "/home". None if it doesn't, or if
/// these begin before `from`.
std::optional<std::size_t> behindUserFolder(std::string_view text, std::size_t from, std::size_t at) {
    for (const std::string_view parent : {"/users/", "/home/"}) {
        // The separators before `at` may be doubled, so the match is tried from a little earlier on.
        for (std::size_t size = parent.size(); size <= parent.size() + 2 && from + size <= at; ++size) {
            if (behindName(text, at - size, parent) == at) {
                const std::size_t end = folderNameEnd(text, at);
                return end > at ? std::optional(end) : std::nullopt;
            }
        }
    }
    return std::nullopt;
}

/// In the system's bytes and in UTF-8.
std::vector<std::string> encodings(const std::string& name) {
    if (name.empty()) {
        return {};
    }
    const std::u8string utf8 = FileSystem::fromBytes(name).u8string();
    std::vector<std::string> names{name};
    if (const std::string other(utf8.begin(), utf8.end()); other != name) {
        names.push_back(other);
    }
    return names;
}

/// With its domain and without. The longer one comes first, so that a text loses all of it.
std::vector<std::string> formsOfComputer(const std::vector<std::string>& names) {
    std::vector<std::string> forms;
    for (const std::string& name : names) {
        for (const std::string& form : {name, name.substr(0, name.find('.'))}) {
            std::ranges::copy(encodings(form), std::back_inserter(forms));
        }
    }
    return forms;
}

/// Without separators at its end. The root is no home folder: everything is in it.
std::string trimmedFolder(std::string folder) {
    while (!folder.empty() && isSeparator(folder.back())) {
        folder.pop_back();
    }
    return folder;
}

} // namespace

PrivateNames privateNames(const Host& host) {
    const auto variable = [&host](const char* first, const char* second) {
        const std::string value = host.environmentVariable(first).value_or("");
        return value.empty() ? host.environmentVariable(second).value_or("") : value;
    };
    return {variable("USERPROFILE", "HOME"), variable("USERNAME", "USER"), computerNames()};
}

Anonymizer::Anonymizer(const PrivateNames& names)
    : homeFolders(encodings(trimmedFolder(names.homeFolder))),
      userNames(encodings(names.userName)),
      computerNames(formsOfComputer(names.computerNames)) {}

std::optional<Anonymizer::Replacement> Anonymizer::replacementAt(std::string_view text, std::size_t done,
                                                                 std::size_t at) const {
    const bool isWordBegin = at == 0 || !isWordByte(text[at - 1]);
    const bool isPathPart = at > 0 && isSeparator(text[at - 1]);
    if (const auto end = isWordBegin ? behindAny(text, at, homeFolders, behindFolder) : std::nullopt) {
        return Replacement{"<home>", *end};
    }
    if (const auto end = isPathPart ? behindUserFolder(text, done, at) : std::nullopt) {
        return Replacement{"<user>", *end};
    }
    if (const auto end = isPathPart ? behindAny(text, at, userNames, behindWord) : std::nullopt) {
        return Replacement{"<user>", *end};
    }
    if (const auto end = isWordBegin ? behindAny(text, at, computerNames, behindWord) : std::nullopt) {
        return Replacement{"<computer>", *end};
    }
    return std::nullopt;
}

std::string Anonymizer::anonymized(std::string_view text) const {
    std::string result;
    // What was replaced isn't looked at again.
    std::size_t done = 0;
    for (std::size_t at = 0; at < text.size();) {
        if (const std::optional<Replacement> replacement = replacementAt(text, done, at)) {
            result += replacement->text;
            at = done = replacement->end;
        } else {
            result += text[at++];
        }
    }
    return result;
}
