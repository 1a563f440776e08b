// The table of actions, and those on boards and configuration.

#include "companion/devices/board_list.h"
#include "companion/draft/configuration_texts.h"
#include "companion/draft/json_edit.h"
#include "companion/setup/action_members.h"
#include "companion/setup/setup_controller.h"
#include "companion/trial/board_light.h"
#include "config/names.h"
#include "mapping/output_state.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <string_view>

namespace {

CommandPlace placeOf(const JsonValue& json) {
    return {memberText(json, "control"), memberFlag(json, "knob"), memberText(json, "action"),
            memberText(json, "role")};
}

/// Writes a light to the boards that have the ids of the configuration; the first failure is in `error`.
void showOn(const HidTransport& transport, const AppConfig& config, const LedCommand& light, std::string& error) {
    for (const ListedBoard& board : listBoards(transport, &config)) {
        std::string reason;
        if (board.matches && !showLight(transport, board, light, reason) && error.empty()) {
            error = boardName(board) + ": " + reason;
        }
    }
}

/// A text or a number, as JSON.
std::string valueText(const JsonValue& json) {
    const JsonValue* const value = find(json, "value");
    if (value == nullptr || value->type == JsonType::String) {
        return quotedJson(value == nullptr ? "" : value->string);
    }
    std::array<char, 32> digits{};
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value->number);
    return {digits.data(), end};
}

bool complete(const CommandPlace& place, std::string& error) {
    if (place.control.empty() || place.action.empty() || place.role.empty()) {
        error = "A command needs a control with a name, an action and a role";
        return false;
    }
    return true;
}

} // namespace

SetupController::Action SetupController::actionOf(const std::string& word) {
    static const std::map<std::string, Action> actions{
        {"addBoard", &SetupController::addBoard},
        {"removeBoard", &SetupController::removeBoard},
        {"ids", &SetupController::setIds},
        {"role", &SetupController::setRole},
        {"name", &SetupController::nameControl},
        {"assign", &SetupController::assign},
        {"clear", &SetupController::clear},
        {"profile", &SetupController::setProfileValue},
        {"preview", &SetupController::previewLight},
        {"sample", &SetupController::takeSample},
        {"undo", &SetupController::undo},
        {"save", &SetupController::save},
        {"reload", &SetupController::reload},
        {"simulator", &SetupController::chooseSimulator},
        {"try", &SetupController::tryCommand},
        {"register", &SetupController::registerProgram},
        {"unregister", &SetupController::unregisterProgram},
        {"startBridge", &SetupController::startBridge},
        {"endBridge", &SetupController::endBridge},
    };
    const auto found = actions.find(word);
    return found == actions.end() ? nullptr : found->second;
}

bool SetupController::act(const JsonValue& json, const std::string& tab, std::string& error) {
    const std::string word = memberText(json, "do");
    if (word == "press" || word == "release" || word == "turn") {
        return operate(json, tab, error);
    }
    if (word == "repair") {
        return repair(json, error);
    }
    const Action action = actionOf(word);
    if (action == nullptr) {
        error = "there is no action \"" + word + "\"";
        return false;
    }
    const std::lock_guard actionLock(actionMutex);
    const bool done = (this->*action)(json, error);
    followConfiguration();
    const std::lock_guard lock(mutex);
    publishState();
    return done;
}

bool SetupController::changeConfiguration(const Change& change, std::string& error) {
    const auto next = std::make_shared<EditedConfiguration>(configuration());
    const bool done = change(*next, error);
    const std::lock_guard lock(mutex);
    state.configuration = next;
    return done;
}

bool SetupController::edit(const EditedConfiguration::Edit& edit, std::string& error) {
    return changeConfiguration(
        [&edit](EditedConfiguration& next, std::string& reason) { return next.change(edit, reason); }, error);
}

void SetupController::showRoles(const AppConfig& config) {
    for (ShownBoard& board : state.boards) {
        const DeviceEntry* const entry = findDeviceEntry(config, board.name, board.index);
        const std::string role = entry == nullptr ? "" : entry->role;
        if (role != board.configuredRole) {
            board.configuredRole = role;
            board.role = role;
        }
    }
}

bool SetupController::addBoard(const JsonValue&, std::string&) {
    virtualBoards.add();
    return true;
}

bool SetupController::removeBoard(const JsonValue& json, std::string& error) {
    error = "there is no such virtual board";
    return virtualBoards.remove(memberText(json, "board"));
}

bool SetupController::operate(const JsonValue& json, const std::string& tab, std::string& error) {
    const std::string word = memberText(json, "do");
    const std::string board = memberText(json, "board");
    const std::int32_t number = memberNumber(json, "control");
    constexpr std::int32_t mostDetents = 127;
    const std::int32_t detents = std::clamp(memberNumber(json, "detents"), -mostDetents, mostDetents);
    if (number < 0 || number > 0xFFFF) {
        error = "a control's number is 0 to 65535";
        return false;
    }
    const auto control = static_cast<std::uint16_t>(number);
    error = "there is no such virtual board";
    if (word == "turn") {
        const auto speed = static_cast<std::uint8_t>(std::clamp(memberNumber(json, "speed"), 0, 0xFF));
        return virtualBoards.turn(board, control, static_cast<std::int8_t>(detents), speed);
    }
    return word == "press" ? virtualBoards.press(board, control, tab, error) : virtualBoards.release(board, control);
}

bool SetupController::setIds(const JsonValue& json, std::string& error) {
    return edit(
        [&](ConfigurationDraft& draft, std::string& reason) {
            return draft.setUsbIds(memberText(json, "vendor"), memberText(json, "product"), reason);
        },
        error);
}

bool SetupController::setRole(const JsonValue& json, std::string& error) {
    return edit(
        [&](ConfigurationDraft& draft, std::string& reason) {
            return draft.setRole(memberText(json, "board"), memberText(json, "role"), reason);
        },
        error);
}

bool SetupController::nameControl(const JsonValue& json, std::string& error) {
    return edit(
        [&](ConfigurationDraft& draft, std::string& reason) {
            return draft.nameControl(memberNumber(json, "control"), memberText(json, "name"), reason);
        },
        error);
}

bool SetupController::assign(const JsonValue& json, std::string& error) {
    const CommandPlace place = placeOf(json);
    const auto set = [&](ConfigurationDraft& draft, std::string& reason) {
        return draft.setCommand(place, memberText(json, "command"), reason);
    };
    if (!complete(place, error) || !edit(set, error)) {
        return false;
    }
    reach(&SetupProgress::assigned);
    return true;
}

bool SetupController::clear(const JsonValue& json, std::string& error) {
    const CommandPlace place = placeOf(json);
    const auto remove = [&](ConfigurationDraft& draft, std::string& reason) {
        return draft.clearCommand(place, reason);
    };
    return complete(place, error) && edit(remove, error);
}

bool SetupController::setProfileValue(const JsonValue& json, std::string& error) {
    return edit(
        [&](ConfigurationDraft& draft, std::string& reason) {
            return draft.setProfileValue(memberText(json, "profile"), memberText(json, "part"), memberText(json, "key"),
                                         valueText(json), reason);
        },
        error);
}

bool SetupController::previewLight(const JsonValue& json, std::string& error) {
    const std::shared_ptr<const BridgeConfiguration> read = configurationFor(false);
    const auto profile = read->settings.outputs.profiles.find(normalizeName(memberText(json, "profile")));
    if (profile == read->settings.outputs.profiles.end()) {
        error = "there is no such profile";
        return false;
    }
    const std::string part = memberText(json, "part");
    const LedCommand light =
        computeLedCommand(profile->second, part != "simDisconnected", true, part != "batteryOff", false, 0.0);
    showOn(platform.hid, read->settings, light, error);
    showOn(virtualBoards.transport(), configurationFor(true)->settings, light, error);
    return error.empty();
}

bool SetupController::takeSample(const JsonValue&, std::string& error) {
    return edit(
        [](ConfigurationDraft& draft, std::string&) {
            // The settings name the user's own board, and the files that this writes to.
            ConfigurationTexts texts = sampleTexts();
            texts[ConfigurationPart::Settings] = draft.texts()[ConfigurationPart::Settings];
            draft.replace(std::move(texts));
            return true;
        },
        error);
}

bool SetupController::undo(const JsonValue&, std::string& error) {
    return edit(
        [](ConfigurationDraft& draft, std::string&) {
            draft.undo();
            return true;
        },
        error);
}

bool SetupController::save(const JsonValue& json, std::string& error) {
    if (configuration().problem().empty() && !configuration().verdict().bridgeStarts &&
        !memberFlag(json, "despiteErrors")) {
        error = "The bridge wouldn't start with this: " + configuration().verdict().refusal;
        return false;
    }
    if (!changeConfiguration([](EditedConfiguration& next, std::string& reason) { return next.save(reason); }, error)) {
        return false;
    }
    reach(&SetupProgress::saved);
    return true;
}

bool SetupController::reload(const JsonValue&, std::string& error) {
    return changeConfiguration(
        [](EditedConfiguration& next, std::string& reason) {
            next.reload();
            reason = next.problem();
            return reason.empty();
        },
        error);
}
