#pragma once

#include <nlohmann/json.hpp>

#include <string>

/// One line, as the feed takes it. Files may hold bytes that aren't UTF-8, which are replaced.
inline std::string jsonLine(const nlohmann::ordered_json& json) {
    return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}
