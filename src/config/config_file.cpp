#include "config/config_file.h"

#include "platform/file_system.h"

#include <utility>

bool readConfigFile(const std::string& path, const ConfigFileMessages& messages, std::string& text,
                    std::string& error) {
    if (!FileSystem::exists(path)) {
        error = messages.notFound + path;
        return false;
    }
    if (!FileSystem::readFile(path, text)) {
        error = messages.openFailed + path;
        return false;
    }
    return true;
}

bool parseConfigRoot(std::string_view text, const ConfigFileMessages& messages, JsonValue& root, std::string& error) {
    JsonParseResult result = JsonParser::parse(text);
    if (!result.ok) {
        error = messages.parseFailed + result.error;
        return false;
    }
    if (result.value.type != JsonType::Object) {
        error = messages.rootNotObject;
        return false;
    }
    root = std::move(result.value);
    return true;
}
