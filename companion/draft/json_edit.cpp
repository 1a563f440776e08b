#include "companion/draft/json_edit.h"

#include "companion/check/json_document.h"
#include "text/ascii.h"

#include <algorithm>
#include <cstddef>

namespace {

bool isContainerNode(const JsonNode& node) {
    return node.type() == JsonType::Object || node.type() == JsonType::Array;
}

std::size_t memberBegin(const JsonNode& node) {
    return node.place.keyEnd == 0 ? node.place.begin : node.place.keyBegin;
}

/// The member or element that is last in the text; null if there is none.
const JsonNode* lastChild(const JsonNode& container) {
    const JsonNode* last = nullptr;
    for (const auto* list : {&container.children, &container.repeated}) {
        if (!list->empty() && (last == nullptr || list->back()->place.begin > last->place.begin)) {
            last = list->back();
        }
    }
    return last;
}

/// The first byte of the white space before a position.
std::size_t spaceBegin(std::string_view text, std::size_t position) {
    while (position > 0 && isSpace(text[position - 1])) {
        --position;
    }
    return position;
}

std::size_t spaceEnd(std::string_view text, std::size_t position) {
    while (position < text.size() && isSpace(text[position])) {
        ++position;
    }
    return position;
}

/// The line end and the indentation before a position; empty if something else is on its line before it.
std::string lineBegin(std::string_view text, std::size_t position) {
    const std::string_view space = text.substr(spaceBegin(text, position), position - spaceBegin(text, position));
    const std::size_t feed = space.rfind('\n');
    if (feed == std::string_view::npos) {
        return "";
    }
    const bool hasReturn = feed > 0 && space[feed - 1] == '\r';
    return std::string(space.substr(feed - (hasReturn ? 1 : 0)));
}

void addBehind(std::string& text, const JsonNode& last, const std::string& item) {
    const std::string line = lineBegin(text, memberBegin(last));
    text.insert(last.place.end, "," + (line.empty() ? " " : line) + item);
}

void fillEmpty(std::string& text, const JsonNode& container, const std::string& item) {
    const std::size_t close = container.place.end - 1;
    const std::string line = lineBegin(text, close);
    const std::size_t open = container.place.begin + 1;
    const std::string indentation = line.ends_with('\t') ? "\t" : "  ";
    text.replace(open, close - open, line.empty() ? item : line + indentation + item + line);
}

/// The rest of a path around its value: {"a": {"b": value}}.
std::string wrapped(const std::vector<PathStep>& path, std::size_t from, std::string value) {
    for (std::size_t i = path.size(); i > from; --i) {
        const PathStep& step = path[i - 1];
        value.insert(0, step.index ? "[" : "{" + quotedJson(step.key) + ": ");
        value += step.index ? ']' : '}';
    }
    return value;
}

/// Whether a step can add something to the container.
bool canAdd(const JsonNode& container, const PathStep& step) {
    return step.index ? container.type() == JsonType::Array && *step.index == container.children.size()
                      : container.isObject();
}

/// The node at the end of the path; null if it isn't there.
const JsonNode* nodeAtEnd(const JsonDocument& document, const std::vector<PathStep>& path) {
    if (document.root() == nullptr) {
        return nullptr;
    }
    const NodeOnPath found = followPath(*document.root(), path);
    return found.steps == path.size() ? found.node : nullptr;
}

/// Removes what is from `begin` to `end`, with the comma before it, else with the one behind it.
void eraseWithComma(std::string& text, std::size_t begin, std::size_t end) {
    const std::size_t before = spaceBegin(text, begin);
    const std::size_t behind = spaceEnd(text, end);
    if (text[before - 1] == ',') {
        text.erase(before - 1, end - before + 1);
    } else if (text[behind] == ',') {
        text.erase(begin, spaceEnd(text, behind + 1) - begin);
    } else {
        // The only one: a line break stays, so that what comes next gets a line of its own again.
        const std::string line = lineBegin(text, behind);
        text.replace(before, behind - before, line);
    }
}

std::string escapedLetter(char letter) {
    constexpr std::string_view special = "\"\\\n\r\t\b\f";
    constexpr std::string_view names = "\"\\nrtbf";
    const std::size_t found = special.find(letter);
    if (found != std::string_view::npos) {
        return {'\\', names[found]};
    }
    // The bridge reads no code of a character, and no command needs one of these.
    const bool isControl = static_cast<unsigned char>(letter) < 0x20;
    return isControl ? " " : std::string(1, letter);
}

} // namespace

bool setJsonValue(std::string& text, const std::vector<PathStep>& path, const std::string& value) {
    const JsonDocument document("", text);
    if (document.root() == nullptr) {
        return false;
    }
    const NodeOnPath found = followPath(*document.root(), path);
    if (found.steps == path.size()) {
        text.replace(found.node->place.begin, found.node->place.end - found.node->place.begin, value);
        return true;
    }
    const PathStep& next = path[found.steps];
    if (!isContainerNode(*found.node) || !canAdd(*found.node, next)) {
        return false;
    }
    const std::string inner = wrapped(path, found.steps + 1, value);
    const std::string item = next.index ? inner : quotedJson(next.key) + ": " + inner;
    if (const JsonNode* const last = lastChild(*found.node)) {
        addBehind(text, *last, item);
    } else {
        fillEmpty(text, *found.node, item);
    }
    return true;
}

bool removeJsonValue(std::string& text, const std::vector<PathStep>& path) {
    const JsonDocument document("", text);
    const JsonNode* const node = path.empty() ? nullptr : nodeAtEnd(document, path);
    if (node == nullptr) {
        return false;
    }
    eraseWithComma(text, memberBegin(*node), node->place.end);
    return true;
}

bool renameJsonKey(std::string& text, const std::vector<PathStep>& path, const std::string& key) {
    const JsonDocument document("", text);
    const JsonNode* const node = nodeAtEnd(document, path);
    if (node == nullptr || node->place.keyEnd == 0) {
        return false;
    }
    text.replace(node->place.keyBegin, node->place.keyEnd - node->place.keyBegin, quotedJson(key));
    return true;
}

std::string quotedJson(std::string_view text) {
    std::string quoted = "\"";
    for (const char letter : text) {
        quoted += escapedLetter(letter);
    }
    return quoted + '"';
}
