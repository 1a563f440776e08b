#pragma once

#include "companion/check/json_document.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// One step from a value to one inside it.
struct PathStep {
    std::string key;
    /// An element of an array; `key` is empty then.
    std::optional<std::size_t> index;
    /// The key is compared without case and spaces, as the bridge compares names.
    bool isName = false;
};

PathStep keyStep(std::string key);
PathStep nameStep(std::string name);
PathStep elementStep(std::size_t index);

/// Which value of a file one of the bridge's messages is about.
struct MessagePlace {
    std::vector<PathStep> path;
    /// The members of that value that the rest of the message names, such as "min" and "max".
    std::vector<std::string> members;
};

/// Takes the place out of a message such as "outputs.profiles[DIM].backlight min/max must be between 0-100". The path
/// is empty when the message names none.
MessagePlace placeInMessage(std::string_view message);

/// The value at the end of the path, or the last one before a step that leads nowhere.
struct NodeOnPath {
    const JsonNode* node = nullptr;
    /// How many steps lead to it.
    std::size_t steps = 0;
};

NodeOnPath followPath(const JsonNode& root, const std::vector<PathStep>& path);

/// Where a finding about the message belongs: at the first of the place's members that exists, else at the value.
const JsonNode& nodeAt(const JsonNode& root, const MessagePlace& place);
