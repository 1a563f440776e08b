#pragma once

#include "config/json.h"

#include <string>

/// The value as a JSON document; the reverse of JsonParser::parse.
std::string jsonText(const JsonValue& value);

/// Objects are merged member by member, and a null removes its member; anything else replaces what is there.
void overlayJson(JsonValue& base, const JsonValue& overlay);

JsonValue jsonString(const std::string& text);
JsonValue jsonNumber(double number);
JsonValue jsonObject();
