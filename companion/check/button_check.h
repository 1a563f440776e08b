#pragma once

#include "companion/check/finding.h"
#include "companion/check/json_document.h"

#include <set>
#include <string>

/// What the other files say that commands refer to. All names are normalised.
struct CommandContext {
    /// The controls of the event map; none when there is no usable map.
    std::set<std::string> controls;
    /// The roles that the configuration gives to boards.
    std::set<std::string> roles;
};

/// Adds what the bridge accepts in `buttons.json` but ignores, or hardly reads as it was meant. The root is an object.
void checkButtons(const JsonDocument& document, const CommandContext& context, Findings& findings);
