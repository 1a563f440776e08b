#include "companion/check/config_check.h"

#include "companion/check/known_keys.h"
#include "config/names.h"
#include "text/wording.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace {

constexpr std::array configRootKeys{
    KnownKey{"$schema", ValueKind::Any},       KnownKey{"hid", ValueKind::Object},
    KnownKey{"mappings", ValueKind::Object},   KnownKey{"mobiflight", ValueKind::Object},
    KnownKey{"cdc", ValueKind::Object},        KnownKey{"logging", ValueKind::Object},
    KnownKey{"extensions", ValueKind::Object}, KnownKey{"outputs", ValueKind::Object},
    KnownKey{"devices", ValueKind::Array},
};

constexpr std::array hidKeys{
    KnownKey{"vid", ValueKind::Text},
    KnownKey{"pid", ValueKind::Text},
    KnownKey{"readIntervalMs", ValueKind::Integer},
    KnownKey{"scanIntervalMs", ValueKind::Integer},
    KnownKey{"trace", ValueKind::Switch},
};

constexpr std::array mappingsKeys{
    KnownKey{"buttonConfigPath", ValueKind::Text},
    KnownKey{"hidEventMapPath", ValueKind::Text},
};

constexpr std::array mobiflightKeys{
    KnownKey{"enabled", ValueKind::Switch},          KnownKey{"clientName", ValueKind::Text},
    KnownKey{"commandChannel", ValueKind::Text},     KnownKey{"responseChannel", ValueKind::Text},
    KnownKey{"lvarsChannel", ValueKind::Text},       KnownKey{"rpnRateLimitMs", ValueKind::Integer},
    KnownKey{"mapHoldRepeatMs", ValueKind::Integer},
};

constexpr std::array cdcKeys{KnownKey{"enabled", ValueKind::Switch}, KnownKey{"comPort", ValueKind::Text}};

constexpr std::array loggingKeys{KnownKey{"debug", ValueKind::Switch}};

constexpr std::array extensionsKeys{
    KnownKey{"singlePendingRead", ValueKind::Switch}, KnownKey{"reopenStoppedReaders", ValueKind::Switch},
    KnownKey{"renewRegistration", ValueKind::Switch}, KnownKey{"ownChannels", ValueKind::Switch},
    KnownKey{"lvarNumbers", ValueKind::Switch},       KnownKey{"batteryIndex", ValueKind::Integer},
    KnownKey{"lightVariable", ValueKind::Text},
};

constexpr std::array outputsKeys{
    KnownKey{"debounceMs", ValueKind::Integer},
    KnownKey{"defaultProfile", ValueKind::Text},
    KnownKey{"roleProfiles", ValueKind::Object},
    KnownKey{"profiles", ValueKind::Object},
};

constexpr std::array profileKeys{
    KnownKey{"backlight", ValueKind::Object},
    KnownKey{"simDisconnected", ValueKind::Object},
    KnownKey{"batteryOff", ValueKind::Object},
};

constexpr std::array backlightKeys{
    KnownKey{"mode", ValueKind::Text},     KnownKey{"min", ValueKind::Integer},
    KnownKey{"max", ValueKind::Integer},   KnownKey{"default", ValueKind::Integer},
    KnownKey{"value", ValueKind::Integer}, KnownKey{"scale", ValueKind::Number},
};

constexpr std::array effectKeys{
    KnownKey{"effect", ValueKind::Text},    KnownKey{"brightness", ValueKind::Integer},
    KnownKey{"count", ValueKind::Integer},  KnownKey{"periodMs", ValueKind::Integer},
    KnownKey{"level", ValueKind::Integer},  KnownKey{"param0", ValueKind::Integer},
    KnownKey{"param1", ValueKind::Integer}, KnownKey{"param2", ValueKind::Integer},
};

constexpr std::array deviceKeys{
    KnownKey{"boardId", ValueKind::Text},
    KnownKey{"index", ValueKind::Integer},
    KnownKey{"role", ValueKind::Text},
    KnownKey{"ledProfile", ValueKind::Text},
};

/// Of two keys for one number, the readable one counts.
struct Alias {
    std::string_view key;
    std::string_view winner;
};

constexpr std::array aliases{Alias{"param0", "count"}, Alias{"param1", "periodMs"}, Alias{"param2", "level"}};

struct Section {
    std::string_view key;
    std::span<const KnownKey> keys;
};

constexpr std::array sections{
    Section{"hid", hidKeys},         Section{"mappings", mappingsKeys}, Section{"mobiflight", mobiflightKeys},
    Section{"cdc", cdcKeys},         Section{"logging", loggingKeys},   Section{"extensions", extensionsKeys},
    Section{"outputs", outputsKeys},
};

/// What an LED control report has room for.
struct SentNumber {
    std::string_view key;
    int largest;
};

constexpr std::array sentNumbers{
    SentNumber{"brightness", 255}, SentNumber{"count", 255},    SentNumber{"param0", 255},     SentNumber{"level", 255},
    SentNumber{"param2", 255},     SentNumber{"param1", 65535}, SentNumber{"periodMs", 65535},
};

/// One pass over the file. Each member function checks one part.
class ConfigCheck {
public:
    ConfigCheck(const JsonDocument& document, Findings& findings)
        : document(document), findings(findings), root(*document.root()) {}

    void run() {
        checkMembers(document, root, configRootKeys, findings);
        for (const Section& section : sections) {
            const JsonNode* const node = root.member(section.key);
            if (node != nullptr && node->isObject()) {
                checkMembers(document, *node, section.keys, findings);
            }
        }
        checkSettingsWithoutEffect();
        checkOutputs();
        checkDevices();
    }

private:
    const JsonDocument& document;
    Findings& findings;
    const JsonNode& root;
    /// Normalised.
    std::set<std::string> profileNames;

    /// Null unless it is there with that type.
    const JsonNode* memberOf(const JsonNode* object, std::string_view key, JsonType type) const {
        const JsonNode* const member = object == nullptr ? nullptr : object->member(key);
        return member != nullptr && member->type() == type ? member : nullptr;
    }

    const JsonNode* setting(std::string_view section, std::string_view key, JsonType type) const {
        return memberOf(root.member(section), key, type);
    }

    void checkSettingsWithoutEffect() {
        if (const JsonNode* const interval = setting("hid", "readIntervalMs", JsonType::Number)) {
            addFinding(findings, document.atKey(*interval, Severity::Hint, "no-effect"), "this setting has no effect",
                       "Leave it out; reports are read as they come");
        }
        const JsonNode* const link = setting("cdc", "enabled", JsonType::Number);
        if (link != nullptr && link->value.number != 0) {
            addFinding(findings, document.atKey(*link, Severity::Warning, "no-effect"),
                       "no build of the bridge has this debug link", "Write 0");
        }
    }

    void checkOutputs() {
        const JsonNode* const outputs = memberOf(&root, "outputs", JsonType::Object);
        if (const JsonNode* const profiles = memberOf(outputs, "profiles", JsonType::Object)) {
            checkProfiles(*profiles);
        }
        checkDefaultProfile(memberOf(outputs, "defaultProfile", JsonType::String));
        if (const JsonNode* const roles = memberOf(outputs, "roleProfiles", JsonType::Object)) {
            checkRoleProfiles(*roles);
        }
    }

    void checkProfiles(const JsonNode& profiles) {
        checkRepeatedKeys(document, profiles, findings);
        for (const JsonNode* profile : profiles.children) {
            checkKind(document, *profile, ValueKind::Object, findings);
            if (!profile->isObject()) {
                continue;
            }
            checkNewName(*profile, "profile", profileNames);
            checkMembers(document, *profile, profileKeys, findings);
            checkProfileParts(*profile);
        }
    }

    /// `names` are those before it, normalised.
    void checkNewName(const JsonNode& member, const std::string& kind, std::set<std::string>& names) {
        const std::string name = normalizeName(member.key);
        if (name.empty()) {
            addFinding(findings, document.atKey(member, Severity::Warning, "empty-name"),
                       "the bridge ignores a " + kind + " without a name", "Name it");
        } else if (!names.insert(name).second) {
            addFinding(findings, document.atKey(member, Severity::Warning, "same-name"),
                       "case and spaces don't count, so there is another " + kind + " of this name",
                       "Rename one of the two");
        }
    }

    void checkProfileParts(const JsonNode& profile) {
        if (const JsonNode* const backlight = memberOf(&profile, "backlight", JsonType::Object)) {
            checkMembers(document, *backlight, backlightKeys, findings);
            checkBacklightMode(memberOf(backlight, "mode", JsonType::String));
        }
        for (const std::string_view part : {"simDisconnected", "batteryOff"}) {
            if (const JsonNode* const effect = memberOf(&profile, part, JsonType::Object)) {
                checkMembers(document, *effect, effectKeys, findings);
                checkSentNumbers(*effect);
                checkAliases(*effect);
            }
        }
    }

    void checkBacklightMode(const JsonNode* mode) {
        constexpr std::array<std::string_view, 3> modes{"fixed", "off", "lvar"};
        if (mode == nullptr || std::ranges::find(modes, mode->value.string) != modes.end()) {
            return;
        }
        const std::string name = normalizeName(mode->value.string);
        if (name != "FIXED" && name != "OFF" && name != "LVAR") {
            addFinding(findings, document.atValue(*mode, Severity::Warning, "unknown-mode"),
                       "the bridge takes this for \"lvar\": the light follows the simulator",
                       suggestion(mode->value.string, modes));
        }
    }

    void checkSentNumbers(const JsonNode& effect) {
        for (const SentNumber& sent : sentNumbers) {
            const JsonNode* const number = memberOf(&effect, sent.key, JsonType::Number);
            if (number != nullptr && (number->value.number < 0 || number->value.number > sent.largest)) {
                addFinding(findings, document.atValue(*number, Severity::Warning, "number-limited"),
                           "a board only takes 0 to " + std::to_string(sent.largest) +
                               "; the bridge sends the nearest limit",
                           "Write 0 to " + std::to_string(sent.largest));
            }
        }
    }

    void checkAliases(const JsonNode& effect) {
        for (const Alias& alias : aliases) {
            const JsonNode* const hidden = memberOf(&effect, alias.key, JsonType::Number);
            if (hidden != nullptr && memberOf(&effect, alias.winner, JsonType::Number) != nullptr) {
                addFinding(findings, document.atKey(*hidden, Severity::Warning, "no-effect"),
                           inQuotes(alias.winner) + " sets the same number, so the bridge ignores this one",
                           "Remove one of the two");
            }
        }
    }

    void checkRoleProfiles(const JsonNode& roles) {
        checkRepeatedKeys(document, roles, findings);
        const std::set<std::string> boardRoles = rolesOfDevices();
        std::set<std::string> names;
        for (const JsonNode* role : roles.children) {
            checkKind(document, *role, ValueKind::Text, findings);
            if (role->type() == JsonType::String) {
                checkNewName(*role, "role", names);
                checkRoleIsUsed(*role, boardRoles);
                checkProfileExists(*role);
            }
        }
    }

    /// Normalised.
    std::set<std::string> rolesOfDevices() const {
        std::set<std::string> roles;
        if (const JsonNode* const devices = memberOf(&root, "devices", JsonType::Array)) {
            for (const JsonNode* device : devices->children) {
                const JsonNode* const role = device->isObject() ? memberOf(device, "role", JsonType::String) : nullptr;
                roles.insert(role == nullptr ? "" : normalizeName(role->value.string));
            }
        }
        roles.erase("");
        return roles;
    }

    /// Boards may get their roles later. Once some have, a role that none has is probably misspelt.
    void checkRoleIsUsed(const JsonNode& member, const std::set<std::string>& boardRoles) {
        const std::string role = normalizeName(member.key);
        if (role.empty() || boardRoles.empty() || boardRoles.contains(role)) {
            return;
        }
        const std::vector<std::string_view> known(boardRoles.begin(), boardRoles.end());
        addFinding(findings, document.atKey(member, Severity::Hint, "unused-role"),
                   "no board has the role " + inQuotes(member.key) + ", so the bridge doesn't use this",
                   suggestion(role, known));
    }

    void checkProfileExists(const JsonNode& reference) {
        const std::string name = normalizeName(reference.value.string);
        if (name.empty() || profileNames.contains(name)) {
            return;
        }
        const std::vector<std::string_view> known(profileNames.begin(), profileNames.end());
        addFinding(findings, document.atValue(reference, Severity::Warning, "unknown-profile"),
                   "there is no profile " + inQuotes(reference.value.string) +
                       "; the bridge uses the one that sorts first",
                   known.empty() ? "Add it to outputs.profiles" : suggestion(name, known));
    }

    /// The bridge makes the default profile if there is none, so other settings may name it.
    void checkDefaultProfile(const JsonNode* setting) {
        const std::string written = setting == nullptr ? "" : normalizeName(setting->value.string);
        if (!written.empty() && !profileNames.contains(written)) {
            addFinding(findings, document.atValue(*setting, Severity::Hint, "unknown-profile"),
                       "there is no profile " + inQuotes(setting->value.string) + "; it has the default lights",
                       "Add it to outputs.profiles, or name one that is there");
        }
        profileNames.insert(written.empty() ? "DEFAULT" : written);
    }

    void checkDevices() {
        const JsonNode* const devices = memberOf(&root, "devices", JsonType::Array);
        if (devices == nullptr) {
            return;
        }
        std::set<std::string> boards;
        std::set<double> indexes;
        for (const JsonNode* device : devices->children) {
            if (!device->isObject()) {
                continue;
            }
            checkMembers(document, *device, deviceKeys, findings);
            if (const JsonNode* const profile = memberOf(device, "ledProfile", JsonType::String)) {
                checkProfileExists(*profile);
            }
            checkBoard(*device, boards, indexes);
        }
    }

    /// The bridge looks for a board's name in all entries before it looks for its index.
    void checkBoard(const JsonNode& device, std::set<std::string>& boards, std::set<double>& indexes) {
        const JsonNode* const boardId = memberOf(&device, "boardId", JsonType::String);
        const JsonNode* const index = memberOf(&device, "index", JsonType::Number);
        const std::string name = boardId == nullptr ? "" : normalizeBoardId(boardId->value.string);
        if (!name.empty() && !boards.insert(name).second) {
            addFinding(findings, document.atValue(*boardId, Severity::Warning, "repeated-board"),
                       "an entry above is for the same board; the bridge ignores this one", "Remove one of the two");
        } else if (index != nullptr && index->value.number >= 0 &&
                   !indexes.insert(std::trunc(index->value.number)).second) {
            addFinding(findings, document.atValue(*index, Severity::Warning, "repeated-board"),
                       name.empty() ? "an entry above has the same index; the bridge ignores this one"
                                    : "an entry above has the same index; this one only counts by its boardId",
                       name.empty() ? "Remove one of the two" : "Remove the index here");
        }
    }
};

} // namespace

void checkConfig(const JsonDocument& document, Findings& findings) {
    ConfigCheck(document, findings).run();
}
