#pragma once

#include "config/json.h"

#include <string>
#include <string_view>

/// How the messages about one file begin. A path or reason follows, except after `rootNotObject`.
struct ConfigFileMessages {
    const char* notFound;
    const char* openFailed;
    const char* parseFailed;
    const char* rootNotObject;
};

/// Reads a configuration file that has to exist. Throws as FileSystem::exists does when the file system can't say
/// whether it does.
bool readConfigFile(const std::string& path, const ConfigFileMessages& messages, std::string& text, std::string& error);

/// Parses a configuration file's text, whose root has to be an object.
bool parseConfigRoot(std::string_view text, const ConfigFileMessages& messages, JsonValue& root, std::string& error);
