#pragma once

// Configuration records as text, so that a test compares a whole record.

#include "config/app_config.h"

#include <sstream>
#include <string>
#include <vector>

inline std::string joined(const auto&... values) {
    std::ostringstream text;
    ((text << values << '|'), ...);
    return text.str();
}

/// The values of all sections except the outputs, in the order of the records.
inline std::vector<std::string> sectionsOf(const AppConfig& config) {
    const auto& [hid, mappings, mobiflight, cdc, logging, outputs, extensions] = config;
    return {joined(hid.vid, hid.pid, hid.readIntervalMs, hid.scanIntervalMs, hid.trace),
            joined(mappings.buttonConfigPath, mappings.hidEventMapPath),
            joined(mobiflight.enabled, mobiflight.clientName, mobiflight.commandChannel, mobiflight.responseChannel,
                   mobiflight.lvarsChannel, mobiflight.rpnRateLimitMs, mobiflight.mapHoldRepeatMs),
            joined(cdc.enabled, cdc.comPort),
            joined(logging.debug),
            joined(extensions.singlePendingRead, extensions.reopenStoppedReaders, extensions.renewRegistration,
                   extensions.ownChannels, extensions.lvarNumbers, extensions.batteryIndex, extensions.lightVariable)};
}

inline std::string textOf(const BacklightProfile& backlight) {
    return joined(backlight.mode, backlight.min, backlight.max, backlight.defaultValue, backlight.value,
                  backlight.scale);
}

inline std::string textOf(const LedEffect& effect) {
    return joined(effect.effect, effect.brightness, effect.param0, effect.param1, effect.param2);
}

inline std::string textOf(const OutputProfile& profile) {
    return textOf(profile.backlight) + " " + textOf(profile.simDisconnected) + " " + textOf(profile.batteryOff);
}
