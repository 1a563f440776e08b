#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

/// The three files of a configuration.
enum class ConfigurationPart : std::size_t { Settings, EventMap, Commands };

constexpr std::array configurationParts{ConfigurationPart::Settings, ConfigurationPart::EventMap,
                                        ConfigurationPart::Commands};

/// Something of each of the three files.
template <typename Value>
struct ForEachPart {
    std::array<Value, configurationParts.size()> values;

    Value& operator[](ConfigurationPart part) { return values[static_cast<std::size_t>(part)]; }
    const Value& operator[](ConfigurationPart part) const { return values[static_cast<std::size_t>(part)]; }
    bool operator==(const ForEachPart&) const = default;
};

using ConfigurationTexts = ForEachPart<std::string>;
using ConfigurationPaths = ForEachPart<std::string>;

/// The sample set, for two boards with the same controls.
ConfigurationTexts sampleTexts();

/// The settings of the sample set, without boards, names or commands.
ConfigurationTexts emptyTexts();

/// The names of an event map's controls by number. Only what the bridge could read of the text counts.
std::map<std::int32_t, std::string> controlNames(const std::string& eventMap);

/// Those of the sample set.
const std::map<std::int32_t, std::string>& sampleControlNames();
