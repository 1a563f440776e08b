#pragma once

#include "config/output_profiles.h"
#include "text/backlight_variable.h"

#include <cstdint>
#include <string>
#include <string_view>

struct HidConfig {
    /// Hexadecimal text, with or without 0x.
    std::string vid;
    std::string pid;
    /// Stored but not used: a read waits for the report itself.
    std::int32_t readIntervalMs = 2;
    std::int32_t scanIntervalMs = 1000;
    bool trace = false;
};

struct MappingsConfig {
    std::string buttonConfigPath;
    std::string hidEventMapPath;
};

struct MobiFlightConfig {
    bool enabled = true;
    std::string clientName = "VantrelBridgeHID";
    std::string commandChannel = "MobiFlight.Command";
    std::string responseChannel = "MobiFlight.Response";
    std::string lvarsChannel = "MobiFlight.LVars";
    std::int32_t rpnRateLimitMs = 0;
    std::int32_t mapHoldRepeatMs = 10;
};

struct CdcConfig {
    bool enabled = false;
    std::string comPort;
};

struct LoggingConfig {
    bool debug = false;
};

/// Departures from the bridge's fixed behaviour, each for a situation in which that behaviour leaves boards dead or
/// dark. The default of every member is the fixed behaviour.
struct ExtensionsConfig {
    /// Windows: wait again for a read that timed out instead of issuing another one into the same buffer.
    bool singlePendingRead = false;
    /// A pass reconnects a board whose reader has ended although its path never vanished.
    bool reopenStoppedReaders = false;
    /// Attach to the module and register with it again every two seconds until it answers.
    bool renewRegistration = false;
    /// Use client data areas of our own once the module has confirmed the registration.
    bool ownChannels = false;
    /// Every block of light values begins with a number; texts are not read.
    bool lvarNumbers = false;
    /// Which of the aircraft's batteries decides that it has no power: 1 to 16.
    std::int32_t batteryIndex = 2;
    /// The RPN expression that the cockpit light follows.
    std::string lightVariable = "(L:" + std::string(backlightVariable) + ")";
};

/// All settings. Filled once at start, before any worker runs, and read without locks afterwards.
struct AppConfig {
    HidConfig hid;
    MappingsConfig mappings;
    MobiFlightConfig mobiflight;
    CdcConfig cdc;
    LoggingConfig logging;
    OutputsConfig outputs;
    ExtensionsConfig extensions;
};

/// Reads the file at `path` over `config`. False with the message in `error`; `config` may then hold a mix of old and
/// new values. Throws as FileSystem::exists does when the file system can't say whether the file exists.
bool loadAppConfig(const std::string& path, AppConfig& config, std::string& error);

/// The same from a text. `path` only gives the folder that relative paths start from.
bool parseAppConfig(std::string_view text, const std::string& path, AppConfig& config, std::string& error);

/// Checks the values by themselves and against each other, and reads no file. False with the first fault's message in
/// `error`, which is unchanged otherwise. The loading functions have done this.
bool validateAppConfig(const AppConfig& config, std::string& error);

/// A path of the configuration file, relative ones taken from that file's folder.
std::string resolveConfigPath(const std::string& configPath, const std::string& value);

/// The path of `name` in the folder of the configuration file; empty if there is no such file, or if the
/// configuration's path has no folder.
std::string findSiblingFile(const std::string& configPath, const std::string& name);
