#include "mapping/output_state.h"

#include "config/names.h"
#include "text/ascii.h"
#include "text/backlight_variable.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace {

std::uint8_t toByte(std::int32_t value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

std::uint16_t toWord(std::int32_t value) {
    return static_cast<std::uint16_t>(std::clamp(value, 0, 65535));
}

LedCommand steady(std::int32_t brightness) {
    LedCommand command;
    command.effect = 1;
    command.brightness = toByte(brightness);
    return command;
}

LedCommand pulsing(std::uint8_t effect, const LedEffect& ledEffect) {
    LedCommand command;
    command.effect = effect;
    command.count = toByte(ledEffect.param0);
    command.periodMs = toWord(ledEffect.param1);
    command.level = toByte(ledEffect.param2);
    return command;
}

/// Rounds halves away from zero. The low 32 bits of what fits in 64; 0 for the rest, infinities and NaN too.
std::int32_t roundToInt32(double value) {
    constexpr double limit = 0x1p63;
    // Not std::round: some runtimes add a half and round down, which carries the number just below one half up to 1.
    double rounded = std::trunc(value);
    if (std::abs(value - rounded) >= 0.5) {
        rounded += std::copysign(1.0, value);
    }
    if (!(rounded >= -limit && rounded < limit)) {
        return 0;
    }
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::int64_t>(rounded)));
}

std::int32_t backlightLevel(const BacklightProfile& backlight, bool known, double value) {
    double level = known ? value : backlight.defaultValue;
    // Aircraft give their light as a fraction or as a percentage.
    if (level <= 1.0) {
        level *= 100.0;
    }
    const std::int32_t scaled = roundToInt32(level * backlight.scale);
    // Not std::clamp: a profile in code may have its bounds crossed, and then the upper one rules.
    if (scaled > backlight.max) {
        return backlight.max;
    }
    return std::max(scaled, backlight.min);
}

LedCommand backlightCommand(const BacklightProfile& backlight, bool known, double value) {
    const std::string mode = normalizeName(backlight.mode);
    if (mode == "FIXED") {
        return steady(backlight.value);
    }
    // A dark backlight is a steady light of zero, not the absence of an effect.
    if (mode == "OFF") {
        return steady(0);
    }
    return steady(backlightLevel(backlight, known, value));
}

/// Reads a number at the start of the text, white space before it allowed. `end` is the position after it. 0 for no
/// number, and for one too large or too small for a double.
double readNumber(const std::string& text, std::size_t& end) {
    char* stop = nullptr;
    errno = 0;
    const double number = std::strtod(text.c_str(), &stop);
    end = errno == ERANGE ? 0 : static_cast<std::size_t>(stop - text.c_str());
    return number;
}

/// The position of the variable's name in the text, preferably with its "L:"; npos if it isn't there.
std::size_t findVariable(const std::string& text) {
    const std::string upper = upperCased(text);
    const std::size_t prefixed = upper.find("L:" + std::string(backlightVariable));
    return prefixed != std::string::npos ? prefixed : upper.find(backlightVariable);
}

} // namespace

std::optional<LedCommand> boardLedCommand(const AppConfig& config, const std::string& deviceName, int index,
                                          const LightState& state) {
    const OutputProfile* profile = resolveProfile(config, findDeviceEntry(config, deviceName, index));
    if (profile == nullptr) {
        return std::nullopt;
    }
    return computeLedCommand(*profile, state.simConnected, state.batteryKnown, state.batteryOn, state.backlightKnown,
                             state.backlightValue);
}

LedCommand computeLedCommand(const OutputProfile& profile, bool simConnected, bool batteryKnown, bool batteryOn,
                             bool backlightKnown, double backlightValue) {
    if (!simConnected) {
        return effectCommand(profile.simDisconnected);
    }
    if (batteryKnown && !batteryOn) {
        return effectCommand(profile.batteryOff);
    }
    return backlightCommand(profile.backlight, backlightKnown, backlightValue);
}

LedCommand effectCommand(const LedEffect& ledEffect) {
    const std::string effect = normalizeName(ledEffect.effect);
    if (effect == "STEADY") {
        return steady(ledEffect.brightness);
    }
    if (effect == "BREATHE") {
        return pulsing(2, ledEffect);
    }
    if (effect == "FLASH") {
        return pulsing(3, ledEffect);
    }
    return {};
}

bool parseBacklightPayload(const std::string& text, double& value) {
    std::size_t end = 0;
    const double whole = readNumber(text, end);
    if (end != 0 && end == text.size()) {
        value = whole;
        return true;
    }
    const std::size_t variable = findVariable(text);
    if (variable == std::string::npos) {
        return false;
    }
    const std::size_t equals = text.find('=', variable);
    if (equals == std::string::npos) {
        return false;
    }
    const std::size_t begin = equals + 1;
    const double behind = readNumber(text.substr(begin, text.find_first_of(";\r\n", begin) - begin), end);
    if (end == 0) {
        return false;
    }
    value = behind;
    return true;
}
