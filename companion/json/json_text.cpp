#include "companion/json/json_text.h"

namespace {

std::string jsonText(const nlohmann::ordered_json& value, int indent) {
    return value.dump(indent, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

} // namespace

std::string jsonLine(const nlohmann::ordered_json& value) {
    return jsonText(value, -1);
}

std::string jsonDocument(const nlohmann::ordered_json& value) {
    return jsonText(value, 2) + '\n';
}
