#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

enum class JsonType : std::int32_t { Null = 0, Boolean = 1, Number = 2, String = 3, Array = 4, Object = 5 };

/// One JSON value with all of its alternatives side by side; those that `type` doesn't select stay empty or zero.
/// Text is the bytes of the input, in no particular encoding.
struct JsonValue {
    JsonType type = JsonType::Null;
    bool boolean = false;
    double number = 0.0;
    std::string string;
    std::vector<JsonValue> array;
    /// Sorted by the bytes of the key, so iteration is in key order and not in input order.
    std::map<std::string, JsonValue, std::less<>> object;
};

struct JsonParseResult {
    JsonValue value;
    /// Empty on success; otherwise a fixed message, with no position.
    std::string error;
    bool ok = false;
    /// After a failure: the offset in the text at which it was noticed.
    std::size_t errorOffset = 0;
};

/// Where a value is in the text, for programs that show it to the user. Offsets are in bytes; an end is one past the
/// last byte.
struct JsonPlace {
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    std::size_t begin = 0;
    std::size_t end = 0;
    /// An object's member: its key, with the quotes. Otherwise both are zero.
    std::size_t keyBegin = 0;
    std::size_t keyEnd = 0;
    /// The position of the object or array in the list of places; `none` for the root.
    std::size_t parent = none;
};

namespace JsonParser {

/// Reads one JSON document. After a failure `value` is Null. Nesting deeper than 1,000 levels is an error.
JsonParseResult parse(std::string_view text);

/// The same, and lists the places of all values in the order of the text, the second of two equal keys included. After
/// a failure `places` is unspecified.
JsonParseResult parse(std::string_view text, std::vector<JsonPlace>& places);

} // namespace JsonParser

/// The member of that key, or null when `object` isn't an object or has none.
const JsonValue* find(const JsonValue& object, std::string_view key);

// A member of another type is treated as missing: false, and `out` is unchanged.
bool getString(const JsonValue& object, std::string_view key, std::string& out);
/// Truncates toward zero. Outside the 32-bit range after truncation, and for NaN: -2147483648.
bool getInt(const JsonValue& object, std::string_view key, std::int32_t& out);
/// `out` points into `object`.
bool getObject(const JsonValue& object, std::string_view key, const JsonValue*& out);
