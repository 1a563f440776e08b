#include "simulation/scenarios/json_text.h"

#include <array>
#include <cstdio>

namespace {

std::string numberText(double number) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.17g", number);
    return text.data();
}

std::string stringText(const std::string& text) {
    std::string quoted = "\"";
    for (const char letter : text) {
        const auto code = static_cast<unsigned char>(letter);
        if (letter == '"' || letter == '\\') {
            quoted += '\\';
            quoted += letter;
        } else if (code < 0x20) {
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "\\u%04x", code);
            quoted += escape.data();
        } else {
            quoted += letter;
        }
    }
    return quoted + '"';
}

std::string arrayText(const std::vector<JsonValue>& elements) {
    std::string text;
    for (const JsonValue& element : elements) {
        text += (text.empty() ? "" : ", ") + jsonText(element);
    }
    return '[' + text + ']';
}

std::string objectText(const std::map<std::string, JsonValue, std::less<>>& members) {
    std::string text;
    for (const auto& [key, member] : members) {
        text += (text.empty() ? "" : ", ") + stringText(key) + ": " + jsonText(member);
    }
    return '{' + text + '}';
}

} // namespace

std::string jsonText(const JsonValue& value) {
    switch (value.type) {
    case JsonType::Boolean:
        return value.boolean ? "true" : "false";
    case JsonType::Number:
        return numberText(value.number);
    case JsonType::String:
        return stringText(value.string);
    case JsonType::Array:
        return arrayText(value.array);
    case JsonType::Object:
        return objectText(value.object);
    case JsonType::Null:
        break;
    }
    return "null";
}

void overlayJson(JsonValue& base, const JsonValue& overlay) {
    if (overlay.type != JsonType::Object) {
        base = overlay;
        return;
    }
    if (base.type != JsonType::Object) {
        base = jsonObject();
    }
    for (const auto& [key, member] : overlay.object) {
        if (member.type == JsonType::Null) {
            base.object.erase(key);
        } else {
            overlayJson(base.object[key], member);
        }
    }
}

JsonValue jsonString(const std::string& text) {
    JsonValue value;
    value.type = JsonType::String;
    value.string = text;
    return value;
}

JsonValue jsonNumber(double number) {
    JsonValue value;
    value.type = JsonType::Number;
    value.number = number;
    return value;
}

JsonValue jsonObject() {
    JsonValue value;
    value.type = JsonType::Object;
    return value;
}
