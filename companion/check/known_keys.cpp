#include "companion/check/known_keys.h"

#include "simulation/scenarios/nearest_word.h"
#include "text/wording.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace {

bool isRead(JsonType type, ValueKind kind) {
    switch (kind) {
    case ValueKind::Any:
        return true;
    case ValueKind::Object:
        return type == JsonType::Object;
    case ValueKind::Array:
        return type == JsonType::Array;
    case ValueKind::Text:
        return type == JsonType::String;
    case ValueKind::Switch:
    case ValueKind::Integer:
    case ValueKind::Number:
        return type == JsonType::Number;
    }
    return false;
}

const char* wantedText(ValueKind kind) {
    switch (kind) {
    case ValueKind::Object:
        return "an object: {...}";
    case ValueKind::Array:
        return "a list: [...]";
    case ValueKind::Text:
        return "a text in double quotes";
    case ValueKind::Switch:
        return "1 for on or 0 for off, without quotes";
    case ValueKind::Integer:
        return "a whole number without quotes";
    case ValueKind::Number:
        return "a number without quotes";
    case ValueKind::Any:
        break;
    }
    return "";
}

/// The bridge cuts fractions off, and takes what doesn't fit 32 bits for the smallest number.
void checkInteger(const JsonDocument& document, const JsonNode& value, Findings& findings) {
    using Limits = std::numeric_limits<std::int32_t>;
    const double number = value.value.number;
    const double whole = std::trunc(number);
    if (!(whole >= Limits::min() && whole <= Limits::max())) {
        addFinding(findings, document.atValue(value, Severity::Warning, "number-too-large"),
                   "the bridge reads this number as -2147483648", "Write a number within 32 bits");
    } else if (whole != number) {
        addFinding(findings, document.atValue(value, Severity::Warning, "fraction-dropped"),
                   "the bridge reads this number as " + std::to_string(static_cast<long>(whole)),
                   "Write a whole number");
    }
}

} // namespace

std::string suggestion(std::string_view word, std::span<const std::string_view> known) {
    if (const std::optional<std::string_view> nearest = nearestWord(word, known)) {
        return "Did you mean " + inQuotes(*nearest) + "?";
    }
    return "Known here: " + listText(known);
}

void checkRepeatedKeys(const JsonDocument& document, const JsonNode& object, Findings& findings) {
    for (const JsonNode* member : object.repeated) {
        addFinding(findings, document.atKey(*member, Severity::Warning, "repeated-key"),
                   inQuotes(member->key) + " is here a second time; the bridge ignores this one",
                   "Remove one of the two");
    }
}

void checkKind(const JsonDocument& document, const JsonNode& value, ValueKind kind, Findings& findings) {
    if (!isRead(value.type(), kind)) {
        const bool isBoolean = kind == ValueKind::Switch && value.type() == JsonType::Boolean;
        addFinding(findings, document.atValue(value, Severity::Warning, isBoolean ? "boolean-switch" : "wrong-type"),
                   "the bridge ignores this value of " + inQuotes(value.key), std::string("Write ") + wantedText(kind));
    } else if (kind == ValueKind::Integer || kind == ValueKind::Switch) {
        checkInteger(document, value, findings);
    }
}

void checkMembers(const JsonDocument& document, const JsonNode& object, std::span<const KnownKey> known,
                  Findings& findings) {
    checkRepeatedKeys(document, object, findings);
    std::vector<std::string_view> keys;
    std::ranges::transform(known, std::back_inserter(keys), &KnownKey::key);
    for (const JsonNode* member : object.children) {
        const auto rule = std::ranges::find(known, member->key, &KnownKey::key);
        if (rule != known.end()) {
            checkKind(document, *member, rule->kind, findings);
        } else {
            addFinding(findings, document.atKey(*member, Severity::Warning, "unknown-key"),
                       "the bridge knows no key " + inQuotes(member->key) + " here and ignores it",
                       suggestion(member->key, keys));
        }
    }
}
