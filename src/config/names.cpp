#include "config/names.h"

namespace {

// The classes of the C locale, spelled out so that no locale set elsewhere in the process can change a name.
bool isSpace(char byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

char toUpper(char byte) {
    return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
}

} // namespace

std::string normalizeName(std::string_view text) {
    std::string name;
    name.reserve(text.size());
    for (const char byte : text) {
        if (!isSpace(byte)) {
            name.push_back(toUpper(byte));
        }
    }
    return name;
}

std::string normalizeBoardId(std::string_view text) {
    std::string id = normalizeName(text);
    if (id.starts_with("0X")) {
        id.erase(0, 2);
    }
    return id;
}
