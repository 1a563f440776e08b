#include "companion/check/bridge_errors.h"

#include "companion/check/message_place.h"
#include "companion/guide/message_guide.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace {

/// More errors than anyone reads at once.
constexpr std::size_t mostErrors = 200;
/// Each repair reads the whole file again.
constexpr std::size_t mostBytes = 1'000'000;

/// A value that the bridge accepts where something is required.
struct Replacement {
    std::string_view place;
    std::string_view json;
};

constexpr std::array replacements{
    Replacement{"hid", R"({"vid": "1", "pid": "1"})"},
    Replacement{"hid.vid", R"("1")"},
    Replacement{"hid.pid", R"("1")"},
    Replacement{"mappings", R"({"buttonConfigPath": "x"})"},
    Replacement{"mappings.buttonConfigPath", R"("x")"},
    Replacement{"devices", "[]"},
    Replacement{"devices[]", R"({"index": 0})"},
    Replacement{"buttons", "[]"},
    Replacement{"buttons[]", R"({"name": "x"})"},
    Replacement{"knobs", "[]"},
    Replacement{"knobs[]", R"({"name": "x"})"},
    Replacement{"event_types", R"({"x": 1})"},
    Replacement{"control_ids", R"({"x": 1})"},
};

std::string textOf(const std::vector<PathStep>& path) {
    std::string text;
    for (const PathStep& step : path) {
        text += step.index ? "[]" : (text.empty() ? "" : ".") + step.key;
    }
    return text;
}

std::string quotedKey(const std::string& key) {
    return '"' + key + '"';
}

/// Changes what one message is about, so that the bridge gets past it. Works on a text whose document it keeps.
class Workaround {
public:
    Workaround(const JsonDocument& document, const MessagePlace& place)
        : document(document), place(place), found(followPath(*document.root(), place.path)) {}

    /// The changed text; nothing when there is nothing to change.
    std::optional<std::string> text() const {
        const auto replacement = std::ranges::find(replacements, textOf(place.path), &Replacement::place);
        if (replacement != replacements.end()) {
            return withValue(std::string(replacement->json));
        }
        return place.members.empty() ? withoutMember(*found.node) : withoutMembers();
    }

private:
    const JsonDocument& document;
    const MessagePlace& place;
    NodeOnPath found;

    std::optional<std::string> withValue(const std::string& json) const {
        if (found.steps == place.path.size()) {
            return replaced(found.node->place.begin, found.node->place.end, json);
        }
        if (found.steps + 1 < place.path.size() || !found.node->isObject()) {
            return std::nullopt;
        }
        const std::string separator = found.node->children.empty() ? "" : ",";
        return replaced(found.node->place.begin + 1, found.node->place.begin + 1,
                        quotedKey(place.path.back().key) + ':' + json + separator);
    }

    /// The bridge ignores unknown keys, so another key removes a member.
    std::optional<std::string> withoutMember(const JsonNode& node) const {
        return node.place.keyEnd == 0 ? std::nullopt : replaced(node.place.keyBegin, node.place.keyEnd, quotedKey("_"));
    }

    std::optional<std::string> withoutMembers() const {
        for (const std::string& name : place.members) {
            const JsonNode* const member = found.node->member(name);
            if (member != nullptr) {
                return withoutMember(*member);
            }
        }
        return withoutMember(*found.node);
    }

    std::optional<std::string> replaced(std::size_t begin, std::size_t end, const std::string& by) const {
        return document.text().substr(0, begin) + by + document.text().substr(end);
    }
};

Finding errorAt(const JsonDocument& document, const std::string& message) {
    Finding finding = document.root() == nullptr ? document.at(document.errorOffset(), Severity::Error, "not-json")
                                                 : document.atValue(nodeAt(*document.root(), placeInMessage(message)),
                                                                    Severity::Error, "refused");
    const MessageExplanation explanation = MessageGuide::instance().explain(message);
    finding.message = message;
    finding.hint = explanation.remedy.empty() || document.root() == nullptr ? explanation.meaning : explanation.remedy;
    return finding;
}

/// The text with what the message is about repaired; nothing when that can't be done.
std::optional<std::string> repairedText(const std::string& text, const std::string& message) {
    const JsonDocument document("", text);
    const MessagePlace place = placeInMessage(message);
    if (document.root() == nullptr || place.path.empty()) {
        return std::nullopt;
    }
    return Workaround(document, place).text();
}

} // namespace

Findings bridgeErrors(const JsonDocument& document, const BridgeReader& reader, std::string& accepted) {
    Findings findings;
    std::optional<std::string> text = document.text();
    std::string error;
    const std::size_t attempts = std::clamp(mostBytes / (document.text().size() + 1), std::size_t{1}, mostErrors);
    for (std::size_t attempt = 0; text && attempt < attempts; ++attempt) {
        if (reader(*text, error)) {
            accepted = *text;
            break;
        }
        if (std::ranges::find(findings, error, &Finding::message) == findings.end()) {
            findings.push_back(errorAt(document, error));
        }
        text = repairedText(*text, error);
    }
    return findings;
}
