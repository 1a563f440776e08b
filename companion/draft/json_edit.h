#pragma once

#include "companion/check/message_place.h"

#include <string>
#include <string_view>
#include <vector>

// Changes of a JSON text that leave every other byte as it is: order, spaces, line ends and keys that nobody knows.
// What is added gets the form of what is beside it. All return false, with the text unchanged, when the text isn't JSON
// or the path leads through a value that is neither object nor array.

/// Writes the value, which is JSON, at the end of the path, and makes whatever the path lacks. An index equal to the
/// number of elements adds one.
bool setJsonValue(std::string& text, const std::vector<PathStep>& path, const std::string& value);

/// Removes the member or element at the end of the path. False, too, when it isn't there.
bool removeJsonValue(std::string& text, const std::vector<PathStep>& path);

/// Gives the member at the end of the path another key. False, too, when it isn't there.
bool renameJsonKey(std::string& text, const std::vector<PathStep>& path, const std::string& key);

/// The text as JSON. Bytes outside ASCII stay as they are, since the bridge reads no other form of them.
std::string quotedJson(std::string_view text);
