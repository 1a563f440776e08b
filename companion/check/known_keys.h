#pragma once

#include "companion/check/finding.h"
#include "companion/check/json_document.h"

#include <span>
#include <string>
#include <string_view>

/// What the bridge reads from a member. A value of another type is ignored without a word.
enum class ValueKind { Any, Object, Array, Text, Switch, Integer, Number };

struct KnownKey {
    std::string_view key;
    ValueKind kind;
};

/// Adds what the bridge silently ignores in an object: unknown and repeated keys, and values of the wrong type.
void checkMembers(const JsonDocument& document, const JsonNode& object, std::span<const KnownKey> known,
                  Findings& findings);

/// Adds the keys that occur a second time: the first one counts.
void checkRepeatedKeys(const JsonDocument& document, const JsonNode& object, Findings& findings);

/// Adds a finding when the value isn't what the bridge reads.
void checkKind(const JsonDocument& document, const JsonNode& value, ValueKind kind, Findings& findings);

/// "Did you mean "x"?", or all known words when none is near.
std::string suggestion(std::string_view word, std::span<const std::string_view> known);
