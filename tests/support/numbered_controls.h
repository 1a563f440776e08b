#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

/// The texts of "buttons.json" and "hid_event_map.json", by these names, for buttons numbered from 0 whose press sends
/// the number and then `code`, as in "7 (>K:CODE)": so each command shows which press it was.
inline std::map<std::string, std::string> numberedControls(std::uint32_t count, std::string_view code) {
    std::string buttons = R"({"buttons":[)";
    std::string map = R"({"event_types":{"BUTTON":1},"control_ids":{)";
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        const char* comma = i == 0 ? "" : ",";
        buttons.append(comma).append(R"({"name":"C)").append(number).append(R"(","commands":{"PRESS":{"DEFAULT":")");
        buttons.append(number).append(" ").append(code).append(R"("}}})");
        map.append(comma).append(R"("C)").append(number).append(R"(":)").append(number);
    }
    return {{"buttons.json", buttons + "]}"}, {"hid_event_map.json", map + "}}"}};
}
