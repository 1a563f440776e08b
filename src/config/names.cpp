#include "config/names.h"

#include "text/ascii.h"

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
