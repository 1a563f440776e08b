#include "companion/check/json_document.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

namespace {

/// Continuation bytes of UTF-8 belong to the character before them.
bool beginsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

bool isContainer(char first) {
    return first == '{' || first == '[';
}

} // namespace

const JsonNode* JsonNode::member(std::string_view name) const {
    if (!isObject()) {
        return nullptr;
    }
    const auto found = std::ranges::find(children, name, &JsonNode::key);
    return found == children.end() ? nullptr : *found;
}

JsonDocument::JsonDocument(std::string path, std::string text) : filePath(std::move(path)), fileText(std::move(text)) {
    for (std::size_t end = fileText.find('\n'); end != std::string::npos; end = fileText.find('\n', end + 1)) {
        lineBegins.push_back(end + 1);
    }
    std::vector<JsonPlace> places;
    const JsonParseResult result = JsonParser::parse(fileText, places);
    if (result.ok) {
        readNodes(places);
    } else {
        error = result.error;
        offsetOfError = result.errorOffset;
    }
}

void JsonDocument::readNodes(const std::vector<JsonPlace>& places) {
    nodes.resize(places.size());
    std::set<std::pair<std::size_t, std::string>> keys;
    for (std::size_t i = 0; i < places.size(); ++i) {
        const JsonPlace& place = places[i];
        JsonNode& node = nodes[i];
        node.place = place;
        node.key = JsonParser::parse(textOf(place.keyBegin, place.keyEnd)).value.string;
        if (!isContainer(fileText[place.begin])) {
            node.value = JsonParser::parse(textOf(place.begin, place.end)).value;
        } else {
            node.value.type = fileText[place.begin] == '{' ? JsonType::Object : JsonType::Array;
        }
        if (place.parent != JsonPlace::none) {
            JsonNode& parent = nodes[place.parent];
            const bool isRepeated = place.keyEnd != 0 && !keys.emplace(place.parent, node.key).second;
            (isRepeated ? parent.repeated : parent.children).push_back(&node);
        }
    }
}

std::string_view JsonDocument::textOf(std::size_t begin, std::size_t end) const {
    return std::string_view(fileText).substr(begin, end - begin);
}

Finding JsonDocument::at(std::size_t offset, Severity severity, std::string code) const {
    const auto nextLine = std::ranges::upper_bound(lineBegins, offset);
    const std::size_t lineBegin = *std::prev(nextLine);
    Finding finding;
    finding.file = filePath;
    finding.line = static_cast<std::size_t>(nextLine - lineBegins.begin());
    finding.column = static_cast<std::size_t>(std::ranges::count_if(textOf(lineBegin, offset), beginsCharacter)) + 1;
    finding.severity = severity;
    finding.code = std::move(code);
    // A file may be one long line, of which only the surroundings are ever shown.
    constexpr std::size_t surroundings = 400;
    const std::size_t begin = offset - lineBegin > surroundings ? offset - surroundings : lineBegin;
    std::string_view line = std::string_view(fileText).substr(begin, offset - begin + surroundings);
    line = line.substr(0, line.find('\n', offset - begin));
    finding.lineText = line.ends_with('\r') && begin + line.size() > offset ? line.substr(0, line.size() - 1) : line;
    finding.caret = offset - begin;
    return finding;
}

Finding JsonDocument::atValue(const JsonNode& node, Severity severity, std::string code) const {
    return at(node.place.begin, severity, std::move(code));
}

Finding JsonDocument::atKey(const JsonNode& node, Severity severity, std::string code) const {
    return at(node.place.keyEnd == 0 ? node.place.begin : node.place.keyBegin, severity, std::move(code));
}
