#pragma once

#include "companion/check/configuration_check.h"
#include "companion/check/message_place.h"
#include "companion/draft/configuration_texts.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A command's place in the command file. Names in any case and spacing.
struct CommandPlace {
    std::string control;
    /// Where the control goes if the file doesn't list it: into "knobs", else into "buttons".
    bool isKnob = false;
    std::string action;
    std::string role;
};

/// A configuration while it is changed, with all of its steps. Changes keep what they don't concern byte by byte. Those
/// that can fail return false with the reason in `error` and change nothing. One thread.
class ConfigurationDraft {
public:
    ConfigurationDraft(ConfigurationPaths paths, ConfigurationTexts texts);

    const ConfigurationTexts& texts() const { return now; }

    /// Begins again with these texts, as one step that can be undone.
    void replace(ConfigurationTexts texts) { step(std::move(texts)); }

    bool setUsbIds(const std::string& vendorId, const std::string& productId, std::string& error);
    /// Names a control's number, or renames it, also where it has commands.
    bool nameControl(std::int32_t number, const std::string& name, std::string& error);
    bool setCommand(const CommandPlace& place, const std::string& command, std::string& error);
    /// Removes the command, and whatever is empty then.
    bool clearCommand(const CommandPlace& place, std::string& error);
    /// Gives a board a role in "devices"; an empty one removes it.
    bool setRole(const std::string& boardId, const std::string& role, std::string& error);
    /// `part`: "backlight", "simDisconnected" or "batteryOff"; `value` is JSON.
    bool setProfileValue(const std::string& profile, const std::string& part, const std::string& key,
                         const std::string& value, std::string& error);

    bool canUndo() const { return !before.empty(); }
    /// Takes the last step back.
    void undo();

    /// What `vantrel check` would find in it.
    ConfigurationVerdict verdict() const;

private:
    using Change = std::function<bool(std::string& text)>;

    ConfigurationPaths paths;
    ConfigurationTexts now;
    std::vector<ConfigurationTexts> before;

    void step(ConfigurationTexts next);
    /// Changes one of the texts, which are unknown after a failure.
    bool changeText(ConfigurationTexts& texts, ConfigurationPart part, const Change& change, std::string& error) const;
    bool change(ConfigurationPart part, const Change& change, std::string& error);
    bool isNameFree(std::int32_t number, std::string_view name, std::string& error) const;
};
