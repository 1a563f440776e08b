#include "companion/check/button_check.h"

#include "companion/check/known_keys.h"
#include "companion/check/rpn_check.h"
#include "config/names.h"
#include "text/wording.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>
#include <vector>

namespace {

constexpr std::array buttonFileKeys{
    KnownKey{"$schema", ValueKind::Any},
    KnownKey{"buttons", ValueKind::Array},
    KnownKey{"knobs", ValueKind::Array},
};

constexpr std::array controlKeys{KnownKey{"name", ValueKind::Text}, KnownKey{"commands", ValueKind::Object}};

constexpr std::array<std::string_view, 7> actionNames{"PRESS", "HOLD", "RELEASE", "CW", "CCW", "CW_FAST", "CCW_FAST"};

std::string inOneName(std::string first, const std::string& second) {
    return std::move(first.append(1, ' ').append(second));
}

/// How many bytes of the file a character of a JSON text takes: an escape takes two, or six when it begins with \u.
std::size_t rawSize(std::string_view raw) {
    if (raw.front() != '\\') {
        return 1;
    }
    return raw.size() > 1 && raw[1] == 'u' ? 6 : 2;
}

/// The offset in the file of a byte of a text value.
std::size_t rawOffset(const JsonDocument& document, const JsonNode& text, std::size_t decodedOffset) {
    const std::string_view file = document.text();
    std::size_t offset = text.place.begin + 1;
    for (std::size_t i = 0; i < decodedOffset; ++i) {
        offset += rawSize(file.substr(offset));
    }
    return offset;
}

/// One pass over the file.
class ButtonCheck {
public:
    ButtonCheck(const JsonDocument& document, const CommandContext& context, Findings& findings)
        : document(document), findings(findings), context(context), knownRoles(context.roles) {
        knownRoles.insert({"DEFAULT", "PFD", "MFD"});
    }

    void run() {
        const JsonNode& root = *document.root();
        checkMembers(document, root, buttonFileKeys, findings);
        for (const std::string_view section : {"buttons", "knobs"}) {
            const JsonNode* const list = root.member(section);
            if (list != nullptr && list->type() == JsonType::Array) {
                std::ranges::for_each(list->children, [&](const JsonNode* control) { checkControl(*control); });
            }
        }
    }

private:
    const JsonDocument& document;
    Findings& findings;
    const CommandContext& context;
    std::set<std::string> knownRoles;
    /// "CONTROL ACTION ROLE" of each command so far, normalised.
    std::set<std::string> commandNames;

    void checkControl(const JsonNode& control) {
        if (!control.isObject()) {
            return;
        }
        checkMembers(document, control, controlKeys, findings);
        const JsonNode* const name = control.member("name");
        if (name == nullptr || name->type() != JsonType::String) {
            return;
        }
        checkControlName(*name);
        const JsonNode* const commands = control.member("commands");
        if (commands == nullptr) {
            addFinding(findings, document.atValue(*name, Severity::Hint, "control-without-command"),
                       "this entry has no commands and does nothing", "Add \"commands\", or remove the entry");
        } else if (commands->isObject()) {
            checkActions(*commands, normalizeName(name->value.string));
        }
    }

    void checkControlName(const JsonNode& node) {
        const std::string name = normalizeName(node.value.string);
        if (name.empty()) {
            addFinding(findings, document.atValue(node, Severity::Warning, "empty-name"),
                       "no control has an empty name", "Write a name of the event map");
        } else if (!context.controls.empty() && !context.controls.contains(name)) {
            const std::vector<std::string_view> known(context.controls.begin(), context.controls.end());
            addFinding(findings, document.atValue(node, Severity::Warning, "control-without-number"),
                       "the event map has no number for " + inQuotes(node.value.string) + ", so no event finds it",
                       suggestion(name, known));
        }
    }

    void checkActions(const JsonNode& commands, const std::string& control) {
        checkRepeatedKeys(document, commands, findings);
        for (const JsonNode* action : commands.children) {
            const std::string name = normalizeName(action->key);
            if (std::ranges::find(actionNames, name) == actionNames.end()) {
                addFinding(findings, document.atKey(*action, Severity::Warning, "unknown-action"),
                           "there is no action " + inQuotes(action->key) + "; its commands are never sent",
                           suggestion(name, actionNames));
            }
            checkKind(document, *action, ValueKind::Object, findings);
            if (action->isObject()) {
                checkRoles(*action, inOneName(control, name));
            }
        }
    }

    void checkRoles(const JsonNode& action, const std::string& place) {
        checkRepeatedKeys(document, action, findings);
        for (const JsonNode* command : action.children) {
            const std::string role = command->key.empty() ? "DEFAULT" : normalizeName(command->key);
            if (!knownRoles.contains(role)) {
                const std::vector<std::string_view> known(knownRoles.begin(), knownRoles.end());
                addFinding(findings, document.atKey(*command, Severity::Warning, "unknown-role"),
                           "no board has the role " + inQuotes(command->key) + " in this configuration",
                           suggestion(role, known));
            }
            checkKind(document, *command, ValueKind::Text, findings);
            if (command->type() == JsonType::String) {
                checkFirst(*command, inOneName(place, role));
                checkText(*command);
            }
        }
    }

    void checkFirst(const JsonNode& command, const std::string& name) {
        if (!commandNames.insert(name).second) {
            addFinding(findings, document.atKey(command, Severity::Warning, "same-name"),
                       "case and spaces don't count, so this control already has a command for this action and role",
                       "Remove one of the two");
        }
    }

    void checkText(const JsonNode& node) {
        const std::string_view written = node.value.string;
        const std::string_view command = written.substr(0, written.find('\0'));
        if (command.size() < written.size()) {
            addAt(node, command.size(), Severity::Warning, "zero-byte",
                  "the command ends here: the bridge sends nothing after a zero byte", "Remove it");
        }
        for (CommandRemark& remark : checkCommand(command)) {
            addAt(node, remark.offset, remark.severity, std::move(remark.code), std::move(remark.message),
                  std::move(remark.hint));
        }
    }

    void addAt(const JsonNode& command, std::size_t offset, Severity severity, std::string code, std::string message,
               std::string hint) {
        addFinding(findings, document.at(rawOffset(document, command, offset), severity, std::move(code)),
                   std::move(message), std::move(hint));
    }
};

} // namespace

void checkButtons(const JsonDocument& document, const CommandContext& context, Findings& findings) {
    ButtonCheck(document, context, findings).run();
}
