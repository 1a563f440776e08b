#pragma once

// How messages word what they are about.

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

inline std::string inQuotes(std::string_view text) {
    return '"' + std::string(text) + '"';
}

/// "equal, different, measured".
inline std::string listText(std::span<const std::string_view> words) {
    std::string list;
    for (const std::string_view word : words) {
        list.append(list.empty() ? "" : ", ").append(word);
    }
    return list;
}

/// "1 report", "2 reports".
inline std::string countText(std::size_t count, std::string_view noun) {
    return std::to_string(count) + ' ' + std::string(noun) + (count == 1 ? "" : "s");
}
