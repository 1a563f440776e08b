#pragma once

#include <nlohmann/json.hpp>

#include <string>

/// What the companion writes as JSON. Paths and files may hold bytes that aren't UTF-8; each becomes U+FFFD.

/// On one line, without a line break.
std::string jsonLine(const nlohmann::ordered_json& value);

/// Indented, with a line break at the end.
std::string jsonDocument(const nlohmann::ordered_json& value);
