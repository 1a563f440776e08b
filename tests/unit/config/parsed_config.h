#pragma once

#include "config/app_config.h"
#include "tests/support/config_samples.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

/// The error of a configuration's text, empty if it loads. The path is a bare file name, so that no other file plays a
/// part.
inline std::string errorOf(std::string_view text) {
    AppConfig config;
    std::string error;
    const bool loaded = parseAppConfig(text, "config.json", config, error);
    EXPECT_EQ(loaded, error.empty()) << text;
    return error;
}

/// A text that loads, read over `given`.
inline AppConfig parsed(std::string_view text, AppConfig given = {}) {
    std::string error = "kept";
    EXPECT_TRUE(parseAppConfig(text, "config.json", given, error)) << error;
    EXPECT_EQ(error, "kept");
    return given;
}

/// The same for the smallest configuration with these members.
inline std::string errorWith(const std::string& members) {
    return errorOf(ConfigSamples::appConfig(members));
}
inline AppConfig configWith(const std::string& members, const AppConfig& given = {}) {
    return parsed(ConfigSamples::appConfig(members), given);
}
