#pragma once

#include "config/json.h"

#include <cstdint>
#include <string>
#include <string_view>

// The members of an action of the page. One that is missing, or of another type, is empty, 0 or false.

std::string memberText(const JsonValue& action, std::string_view key);
std::int32_t memberNumber(const JsonValue& action, std::string_view key);
bool memberFlag(const JsonValue& action, std::string_view key);
