#pragma once

#include <string>

/// Texts of the configuration files, for tests that change one thing about a file that loads.
namespace ConfigSamples {

/// The smallest application configuration that loads, with more top-level members put behind its own.
inline std::string appConfig(const std::string& moreMembers = "") {
    return R"({"hid":{"vid":"0x1234","pid":"ABCD"},"mappings":{"buttonConfigPath":"buttons.json"})" +
           (moreMembers.empty() ? "" : "," + moreMembers) + "}";
}

/// The smallest event map that loads.
inline std::string eventMap() {
    return R"({"event_types":{"button":1},"control_ids":{"AP_MASTER":5}})";
}

/// A command file with one command.
inline std::string buttons(const std::string& name, const std::string& action, const std::string& role,
                           const std::string& command) {
    return R"({"buttons":[{"name":")" + name + R"(","commands":{")" + action + R"(":{")" + role + R"(":")" + command +
           R"("}}}]})";
}

} // namespace ConfigSamples
