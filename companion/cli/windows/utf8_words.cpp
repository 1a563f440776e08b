#include "companion/cli/windows/utf8_words.h"

#include "platform/file_system.h"

#include <windows.h>

#include <algorithm>

namespace {

bool isUtf8(const std::string& word) {
    return MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, word.data(), static_cast<int>(word.size()), nullptr, 0) !=
           0;
}

std::string utf8Word(const std::string& word) {
    if (isUtf8(word)) {
        return word;
    }
    const std::u8string utf8 = FileSystem::fromBytes(word).u8string();
    return {utf8.begin(), utf8.end()};
}

} // namespace

std::string utf8Words(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t size = std::min(text.find_first_of(" \n"), text.size() - 1) + 1;
        result += utf8Word(std::string(text.substr(0, size)));
        text.remove_prefix(size);
    }
    return result;
}
