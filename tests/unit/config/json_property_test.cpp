#include "config/json.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <random>
#include <set>
#include <string>
#include <string_view>

namespace {

using Random = std::mt19937;

bool equal(const JsonValue& left, const JsonValue& right) {
    const auto sameMember = [](const auto& one, const auto& other) {
        return one.first == other.first && equal(one.second, other.second);
    };
    return left.type == right.type && left.boolean == right.boolean && left.number == right.number &&
           left.string == right.string &&
           std::equal(left.array.begin(), left.array.end(), right.array.begin(), right.array.end(), equal) &&
           std::equal(left.object.begin(), left.object.end(), right.object.begin(), right.object.end(), sameMember);
}

std::string randomText(Random& random) {
    // Any byte, with a leaning towards those that need an escape.
    constexpr std::string_view special("\"\\/\b\f\n\r\t\0", 9);
    std::string text;
    for (auto size = random() % 12; size > 0; --size) {
        text += random() % 3 == 0 ? special[random() % special.size()] : static_cast<char>(random() % 256);
    }
    return text;
}

double randomNumber(Random& random) {
    const double whole = static_cast<double>(random()) - 2147483648.0;
    return random() % 2 == 0 ? whole : std::ldexp(whole, static_cast<int>(random() % 1200) - 600);
}

JsonValue randomValue(Random& random, int depth) {
    JsonValue value;
    value.type = static_cast<JsonType>(random() % (depth > 0 ? 6 : 4));
    switch (value.type) {
    case JsonType::Null:
        break;
    case JsonType::Boolean:
        value.boolean = random() % 2 == 0;
        break;
    case JsonType::Number:
        value.number = randomNumber(random);
        break;
    case JsonType::String:
        value.string = randomText(random);
        break;
    case JsonType::Array:
        for (auto size = random() % 6; size > 0; --size) {
            value.array.push_back(randomValue(random, depth - 1));
        }
        break;
    case JsonType::Object:
        for (auto size = random() % 6; size > 0; --size) {
            value.object[randomText(random)] = randomValue(random, depth - 1);
        }
        break;
    }
    return value;
}

std::string blanks(Random& random) {
    std::string text;
    for (auto size = random() % 3; size > 0; --size) {
        text += " \t\r\n"[random() % 4];
    }
    return text;
}

std::string formatted(const char* format, auto value) {
    std::array<char, 64> buffer{};
    std::snprintf(buffer.data(), buffer.size(), format, value);
    return buffer.data();
}

std::string written(const std::string& text, Random& random) {
    std::string out = "\"";
    for (const char byte : text) {
        const bool mustEscape = byte == '"' || byte == '\\';
        if (mustEscape) {
            out += '\\';
            out += byte;
        } else if (byte >= 0 && random() % 8 == 0) {
            out += formatted("\\u%04x", static_cast<unsigned>(byte));
        } else {
            out += byte;
        }
    }
    return out + "\"";
}

std::string written(const JsonValue& value, Random& random) {
    std::string out = blanks(random);
    switch (value.type) {
    case JsonType::Null:
        out += "null";
        break;
    case JsonType::Boolean:
        out += value.boolean ? "true" : "false";
        break;
    case JsonType::Number:
        out += formatted("%.17g", value.number);
        break;
    case JsonType::String:
        out += written(value.string, random);
        break;
    case JsonType::Array: {
        std::string separator = "[";
        for (const JsonValue& element : value.array) {
            out += separator + written(element, random);
            separator = ",";
        }
        out += value.array.empty() ? "[]" : "]";
        break;
    }
    case JsonType::Object: {
        std::string separator = "{";
        for (const auto& [key, member] : value.object) {
            out += separator + blanks(random) + written(key, random) + blanks(random) + ":" + written(member, random);
            separator = ",";
        }
        out += value.object.empty() ? "{}" : "}";
        break;
    }
    }
    return out + blanks(random);
}

const std::set<std::string>& knownErrors() {
    static const std::set<std::string> errors{
        "Unexpected end of input", "Unexpected token",        "Unexpected trailing characters",
        "Expected string key",     "Expected ':' after key",  "Expected ',' or '}'",
        "Expected ',' or ']'",     "Unterminated object",     "Unterminated array",
        "Unterminated string",     "Invalid escape sequence", "Invalid escape character",
        "Invalid unicode escape",  "Invalid boolean",         "Invalid null",
        "Invalid number",          "Nesting too deep"};
    return errors;
}

/// What holds for any text at all.
void checkResult(const std::string& text) {
    const JsonParseResult result = JsonParser::parse(text);
    if (result.ok) {
        EXPECT_EQ(result.error, "") << text;
    } else {
        EXPECT_EQ(knownErrors().count(result.error), 1U) << result.error << " for " << text;
        EXPECT_TRUE(equal(result.value, JsonValue())) << text;
    }
}

} // namespace

TEST(JsonProperty, WhatIsWrittenReadsBackTheSame) {
    Random random(1);
    for (int round = 0; round < 2000; ++round) {
        const JsonValue value = randomValue(random, 5);
        const std::string text = written(value, random);
        const JsonParseResult result = JsonParser::parse(text);
        ASSERT_TRUE(result.ok) << result.error << " for " << text;
        ASSERT_TRUE(equal(result.value, value)) << text;
    }
}

TEST(JsonProperty, NoBeginningOfADocumentReads) {
    Random random(2);
    for (int round = 0; round < 100; ++round) {
        JsonValue value = randomValue(random, 4);
        JsonValue root;
        root.type = JsonType::Array;
        root.array.push_back(value);
        const std::string text = written(root, random);
        const std::size_t last = text.rfind(']');
        for (std::size_t size = 0; size <= last; ++size) {
            ASSERT_FALSE(JsonParser::parse(std::string_view(text).substr(0, size)).ok) << text.substr(0, size);
        }
    }
}

TEST(JsonProperty, AnythingBehindADocumentIsTrailing) {
    Random random(3);
    for (int round = 0; round < 200; ++round) {
        JsonValue root;
        root.type = JsonType::Object;
        root.object["a"] = randomValue(random, 3);
        EXPECT_EQ(JsonParser::parse(written(root, random) + "x").error, "Unexpected trailing characters");
    }
}

TEST(JsonProperty, RandomBytesGiveAKnownErrorOrAValue) {
    Random random(4);
    for (int round = 0; round < 20000; ++round) {
        std::string text(random() % 40, '\0');
        std::generate(text.begin(), text.end(), [&] { return static_cast<char>(random() % 256); });
        checkResult(text);
    }
}

TEST(JsonProperty, RandomTokensGiveAKnownErrorOrAValue) {
    constexpr std::array tokens{"{",   "}",     "[",      "]",    ":",  ",",  "\"",  "\"a\"", "1",       "-",
                                ".",   "e",     "true",   "null", "\\", " ",  "\\u", "00e9",  "\"\\n\"", "tru",
                                "nul", "false", "1e9999", "-.5",  "/",  "{}", "[]",  "x",     "\n",      "\"b\":"};
    Random random(5);
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        for (auto count = random() % 20; count > 0; --count) {
            text += tokens[random() % tokens.size()];
        }
        checkResult(text);
    }
}

TEST(JsonProperty, DamagedDocumentsGiveAKnownErrorOrAValue) {
    Random random(6);
    for (int round = 0; round < 3000; ++round) {
        std::string text = written(randomValue(random, 4), random);
        for (auto damages = 1 + random() % 3; damages > 0 && !text.empty(); --damages) {
            text[random() % text.size()] = static_cast<char>(random() % 256);
        }
        checkResult(text);
    }
}
