#pragma once

#include "companion/check/finding.h"
#include "config/json.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// A value of a document with its place. What a JsonValue drops is here: the order of the members, and the second of
/// two equal keys.
struct JsonNode {
    JsonValue value;
    /// An object's member: its name.
    std::string key;
    JsonPlace place;
    /// The members or elements that count, in the order of the text. Containers only.
    std::vector<const JsonNode*> children;
    /// The members whose key is there before: the bridge ignores them.
    std::vector<const JsonNode*> repeated;

    JsonType type() const { return value.type; }
    bool isObject() const { return value.type == JsonType::Object; }

    /// Null if there is none.
    const JsonNode* member(std::string_view name) const;
};

/// A file's text and its values with their places. Values point into the document, so it can't be copied.
class JsonDocument {
public:
    JsonDocument(std::string path, std::string text);
    JsonDocument(const JsonDocument&) = delete;
    JsonDocument& operator=(const JsonDocument&) = delete;

    const std::string& path() const { return filePath; }
    const std::string& text() const { return fileText; }

    /// Null when the text isn't JSON; then `syntaxError` says why.
    const JsonNode* root() const { return nodes.empty() ? nullptr : &nodes.front(); }
    const std::string& syntaxError() const { return error; }
    std::size_t errorOffset() const { return offsetOfError; }

    /// A finding at a byte of the text. The caller adds message and hint.
    Finding at(std::size_t offset, Severity severity, std::string code) const;
    /// The same at a value.
    Finding atValue(const JsonNode& node, Severity severity, std::string code) const;
    /// The same at a member's key; at the value if it has none.
    Finding atKey(const JsonNode& node, Severity severity, std::string code) const;

private:
    std::string filePath;
    std::string fileText;
    std::string error;
    std::size_t offsetOfError = 0;
    std::vector<JsonNode> nodes;
    /// Offsets of the lines' first bytes.
    std::vector<std::size_t> lineBegins{0};

    void readNodes(const std::vector<JsonPlace>& places);
    std::string_view textOf(std::size_t begin, std::size_t end) const;
};
