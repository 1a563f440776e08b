#include "companion/check/message_place.h"

#include "config/names.h"
#include "text/ascii.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>
#include <utility>

namespace {

constexpr std::string_view keyLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_";

/// The part of the message that is written as a path, and what follows it.
struct PathText {
    std::string_view path;
    std::string_view rest;
};

PathText splitAt(std::string_view text, std::size_t position) {
    return {text.substr(0, position), text.substr(std::min(position, text.size()))};
}

/// A profile's name is the user's own and may contain anything, so what comes after it is looked for from the end.
PathText profilePath(std::string_view message) {
    const std::size_t name = message.rfind("].");
    return name == std::string_view::npos ? PathText{"", message} : splitAt(message, message.find(' ', name));
}

PathText pathText(std::string_view message) {
    if (message.starts_with("outputs.profiles[")) {
        return profilePath(message);
    }
    const std::size_t quote = message.find('\'');
    if (quote != std::string_view::npos) {
        return splitAt(message.substr(quote + 1), message.find('\'', quote + 1) - quote - 1);
    }
    constexpr std::string_view mapMessage = "Event map missing valid ";
    if (message.starts_with(mapMessage)) {
        message.remove_prefix(mapMessage.size());
    }
    const PathText split = splitAt(message, message.find(' '));
    const bool isPath = split.path.find_first_of("._[") != std::string_view::npos;
    return isPath ? split : PathText{"", message};
}

PathStep bracketStep(std::string_view text) {
    std::size_t index = 0;
    const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), index);
    if (code == std::errc() && end == text.data() + text.size()) {
        return elementStep(index);
    }
    return nameStep(std::string(text));
}

std::vector<PathStep> stepsOf(std::string_view path) {
    std::vector<PathStep> steps;
    while (!path.empty()) {
        if (path.front() == '[') {
            const std::size_t close = std::min(path.rfind("]."), path.size() - 1);
            const bool isProfile = !steps.empty() && steps.back().key == "profiles";
            steps.push_back(isProfile ? nameStep(std::string(path.substr(1, close - 1)))
                                      : bracketStep(path.substr(1, close - 1)));
            path.remove_prefix(std::min(close + 1, path.size()));
        } else {
            const std::size_t size = std::min(path.find_first_not_of(keyLetters), path.size());
            if (size == 0) {
                return {};
            }
            steps.push_back(keyStep(std::string(path.substr(0, size))));
            path.remove_prefix(size);
        }
        path.remove_prefix(path.starts_with('.') ? 1 : 0);
    }
    return steps;
}

/// "min/max must be ..." names two members, "must be ..." and "is required ..." name none.
std::vector<std::string> membersOf(std::string_view rest) {
    rest = trimmed(rest);
    if (rest.starts_with("missing ")) {
        rest.remove_prefix(8);
    }
    std::string_view words = rest.substr(0, rest.find(' '));
    if (words == "must" || words == "is") {
        return {};
    }
    std::vector<std::string> members;
    while (!words.empty()) {
        const std::size_t slash = words.find('/');
        members.emplace_back(words.substr(0, slash));
        words.remove_prefix(slash == std::string_view::npos ? words.size() : slash + 1);
    }
    return members;
}

/// Of two names that the bridge takes for one, the one whose key sorts last counts.
const JsonNode* memberOfName(const JsonNode& object, const std::string& name) {
    const JsonNode* found = nullptr;
    for (const JsonNode* child : object.children) {
        if (normalizeName(child->key) == name && (found == nullptr || child->key > found->key)) {
            found = child;
        }
    }
    return found;
}

/// Of "min" and "max", the one that is out of range is to blame.
bool isPercentage(const JsonNode& node) {
    return node.type() == JsonType::Number && node.value.number >= 0 && node.value.number <= 100;
}

const JsonNode* follow(const JsonNode& node, const PathStep& step) {
    if (step.index) {
        const bool present = node.type() == JsonType::Array && *step.index < node.children.size();
        return present ? node.children[*step.index] : nullptr;
    }
    return step.isName ? memberOfName(node, step.key) : node.member(step.key);
}

} // namespace

PathStep keyStep(std::string key) {
    return {std::move(key), std::nullopt, false};
}

PathStep nameStep(std::string name) {
    return {std::move(name), std::nullopt, true};
}

PathStep elementStep(std::size_t index) {
    return {"", index, false};
}

MessagePlace placeInMessage(std::string_view message) {
    const PathText split = pathText(message);
    return {stepsOf(split.path), split.path.empty() ? std::vector<std::string>() : membersOf(split.rest)};
}

NodeOnPath followPath(const JsonNode& root, const std::vector<PathStep>& path) {
    NodeOnPath found{&root, 0};
    for (const PathStep& step : path) {
        const JsonNode* const next = follow(*found.node, step);
        if (next == nullptr) {
            break;
        }
        found = {next, found.steps + 1};
    }
    return found;
}

const JsonNode& nodeAt(const JsonNode& root, const MessagePlace& place) {
    const JsonNode& node = *followPath(root, place.path).node;
    const JsonNode* first = nullptr;
    for (const std::string& name : place.members) {
        const JsonNode* const member = node.member(name);
        if (member != nullptr && !isPercentage(*member)) {
            return *member;
        }
        first = first == nullptr ? member : first;
    }
    return first == nullptr ? node : *first;
}
