#include "companion/check/event_map_check.h"

#include "companion/check/known_keys.h"
#include "config/names.h"
#include "text/wording.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace {

constexpr std::array eventMapKeys{
    KnownKey{"$schema", ValueKind::Any},
    KnownKey{"event_types", ValueKind::Object},
    KnownKey{"control_ids", ValueKind::Object},
};

/// A section that names numbers.
struct NumberSection {
    std::string_view key;
    const char* what;
    double largest;
};

constexpr std::array numberSections{
    NumberSection{"event_types", "type of event", 255},
    NumberSection{"control_ids", "control", 65535},
};

/// One pass over a section.
class NumberCheck {
public:
    NumberCheck(const JsonDocument& document, const NumberSection& section, Findings& findings)
        : document(document), section(section), findings(findings) {}

    void run(const JsonNode& object) {
        checkRepeatedKeys(document, object, findings);
        for (const JsonNode* member : object.children) {
            checkKind(document, *member, ValueKind::Integer, findings);
            if (member->type() == JsonType::Number) {
                checkRange(*member);
                checkName(*member);
                numbers[member->value.number].push_back(member);
            }
        }
        for (const auto& [number, members] : numbers) {
            checkNumber(members);
        }
    }

private:
    const JsonDocument& document;
    const NumberSection& section;
    Findings& findings;
    std::set<std::string> names;
    std::map<double, std::vector<const JsonNode*>> numbers;

    void checkRange(const JsonNode& member) {
        if (member.value.number < 0 || member.value.number > section.largest) {
            addFinding(findings, document.atValue(member, Severity::Warning, "number-out-of-range"),
                       "no board can send this number",
                       "Write 0 to " + std::to_string(static_cast<int>(section.largest)));
        }
    }

    void checkName(const JsonNode& member) {
        if (!names.insert(normalizeName(member.key)).second) {
            addFinding(findings, document.atKey(member, Severity::Warning, "same-name"),
                       "case and spaces don't count, so there is another " + std::string(section.what) +
                           " of this name",
                       "Rename one of the two, unless they are meant to do the same");
        }
    }

    /// Of several names for a number, the bridge keeps the one that sorts last.
    void checkNumber(const std::vector<const JsonNode*>& members) {
        const JsonNode* const kept = *std::ranges::max_element(members, {}, &JsonNode::key);
        for (const JsonNode* member : std::span(members).subspan(1)) {
            addFinding(findings, document.atValue(*member, Severity::Warning, "number-twice"),
                       "the number of " + inQuotes(members.front()->key) + " too; the bridge only knows the name " +
                           inQuotes(kept->key),
                       "Give each " + std::string(section.what) + " its own number");
        }
    }
};

} // namespace

void checkEventMap(const JsonDocument& document, Findings& findings) {
    const JsonNode& root = *document.root();
    checkMembers(document, root, eventMapKeys, findings);
    for (const NumberSection& section : numberSections) {
        const JsonNode* const node = root.member(section.key);
        if (node != nullptr && node->isObject()) {
            NumberCheck(document, section, findings).run(*node);
        }
    }
}
