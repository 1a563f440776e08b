#include "config/json.h"

#include "tests/fuzz/fuzz_support.h"

#include <cstddef>
#include <cstdint>

namespace {

/// Gives how deep the value is nested.
std::size_t checkValue(const JsonValue& value) {
    require(value.type == JsonType::String || value.string.empty(), "only a string holds text");
    require(value.type == JsonType::Array || value.array.empty(), "only an array holds elements");
    require(value.type == JsonType::Object || value.object.empty(), "only an object holds members");
    require(value.type == JsonType::Number || value.number == 0.0, "only a number holds a number");
    require(value.type == JsonType::Boolean || !value.boolean, "only a boolean is true");
    std::size_t deepest = 0;
    const auto visit = [&](const JsonValue& child) {
        const std::size_t depth = checkValue(child);
        deepest = depth > deepest ? depth : deepest;
    };
    for (const JsonValue& element : value.array) {
        visit(element);
    }
    for (const auto& [key, member] : value.object) {
        require(find(value, key) == &member, "every member is found by its key");
        std::int32_t number = 0;
        require(getInt(value, key, number) == (member.type == JsonType::Number), "getInt takes numbers alone");
        visit(member);
    }
    return deepest + (value.type == JsonType::Array || value.type == JsonType::Object ? 1 : 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const JsonParseResult result = JsonParser::parse(inputText(data, size));
    require(result.ok == result.error.empty(), "ok without an error and the other way round");
    require(result.ok || result.value.type == JsonType::Null, "a failure gives Null");
    require(checkValue(result.value) <= 1000, "no value is nested deeper than the limit");
    return 0;
}
