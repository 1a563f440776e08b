#pragma once

#include <cstdint>
#include <fstream>
#include <string>
#include <string_view>

/// Writes "buttons.json" and "hid_event_map.json" into the folder, for buttons numbered from 0 whose press sends the
/// number and then `code`, as in "7 (>K:CODE)": so each command tells which press it was.
inline void writeNumberedControls(const std::string& folder, std::uint32_t count, std::string_view code) {
    std::ofstream buttons(folder + "/buttons.json");
    std::ofstream map(folder + "/hid_event_map.json");
    buttons << R"({"buttons":[)";
    map << R"({"event_types":{"BUTTON":1},"control_ids":{)";
    for (std::uint32_t number = 0; number < count; ++number) {
        const char* comma = number == 0 ? "" : ",";
        buttons << comma << R"({"name":"C)" << number << R"(","commands":{"PRESS":{"DEFAULT":")" << number << ' '
                << code << R"("}}})";
        map << comma << R"("C)" << number << R"(":)" << number;
    }
    buttons << "]}";
    map << "}}";
}
