#pragma once

#include "config/app_config.h"
#include "config/button_config.h"
#include "config/hid_event_map.h"
#include "hid/hid_protocol.h"

#include <gtest/gtest.h>

#include <string>

/// Nanoseconds of a millisecond.
constexpr std::int64_t msNs = 1'000'000;

inline HidProtocol::HidEvent button(std::uint16_t controlId, int value, std::uint8_t mode = 0) {
    return {.type = 1, .controlId = controlId, .value = static_cast<std::int8_t>(value), .mode = mode};
}

inline HidProtocol::HidEvent encoder(std::uint16_t controlId, int value, std::uint8_t speed = 0,
                                     std::uint8_t mode = 0) {
    return {.type = 2, .controlId = controlId, .value = static_cast<std::int8_t>(value), .speed = speed, .mode = mode};
}

inline HidProtocol::HidEvent notice(std::uint8_t mode = 0) {
    return {.type = 4, .mode = mode};
}

inline LedCommand steady(std::uint8_t brightness) {
    return {.effect = 1, .brightness = brightness};
}

// What a board of the default profile shows.
inline const LedCommand disconnectedFlash{.effect = 3, .count = 4, .periodMs = 150, .level = 100};
inline const LedCommand batteryBreathe{.effect = 2, .count = 5, .periodMs = 1000, .level = 50};

/// The three configurations that the mapping reads.
struct MappingSettings {
    MappingSettings() {
        config.hid.vid = "1234";
        config.hid.pid = "ABCD";
        config.outputs.debounceMs = 0;
        ensureDefaultProfile(config.outputs);
        eventMap.eventTypes = {{1, "BUTTON"}, {2, "ENCODER"}};
    }

    /// Names a control and gives it commands, in the command file's form: `"PRESS":{"":"X"}`.
    void addControl(std::int32_t controlId, const std::string& name, const std::string& commands) {
        eventMap.controlIds[controlId] = name;
        elements += (elements.empty() ? "" : ",") + (R"({"name":")" + name + R"(","commands":{)" + commands + "}}");
        std::string error;
        EXPECT_TRUE(buttons.parse(R"({"buttons":[)" + elements + "]}", error)) << error;
    }

    AppConfig config;
    ButtonConfig buttons;
    HidEventMap eventMap;

private:
    std::string elements;
};
