#include "companion/setup/action_members.h"

std::string memberText(const JsonValue& action, std::string_view key) {
    std::string text;
    getString(action, key, text);
    return text;
}

std::int32_t memberNumber(const JsonValue& action, std::string_view key) {
    std::int32_t number = 0;
    getInt(action, key, number);
    return number;
}

bool memberFlag(const JsonValue& action, std::string_view key) {
    const JsonValue* const value = find(action, key);
    return value != nullptr && value->boolean;
}
