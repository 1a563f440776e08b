#include "config/json.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <system_error>
#include <utility>

namespace {

/// Each level of nesting is a level of recursion; this many fit the smallest stack with room to spare.
constexpr int maxDepth = 1000;

/// Where objects and arrays differ.
struct ContainerSyntax {
    char close;
    const char* unterminated;
    const char* badSeparator;
};

constexpr ContainerSyntax objectSyntax{'}', "Unterminated object", "Expected ',' or '}'"};
constexpr ContainerSyntax arraySyntax{']', "Unterminated array", "Expected ',' or ']'"};

bool isDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

/// Converts a whole token. The token isn't terminated in the text, hence the copy for the rare number that is too large
/// or too small for `from_chars`, where `strtod` gives infinity or zero.
bool convertNumber(const char* begin, const char* end, double& number) {
    const auto [stop, status] = std::from_chars(begin, end, number);
    if (stop != end) {
        return false;
    }
    if (status == std::errc::result_out_of_range) {
        number = std::strtod(std::string(begin, end).c_str(), nullptr);
        return true;
    }
    return status == std::errc();
}

/// A position in the text. A read that fails sets the message and returns false, and then every caller gives up: the
/// first message is the one reported. The value is then half built; `parse` drops it.
class JsonCursor {
public:
    /// `places` may be null.
    JsonCursor(std::string_view text, std::vector<JsonPlace>* places)
        : start(text.data()), at(text.data()), end(text.data() + text.size()), places(places) {}

    bool readDocument(JsonValue& value) {
        skipByteOrderMark();
        if (!readValue(value)) {
            return false;
        }
        skipSpace();
        return at == end || fail("Unexpected trailing characters");
    }

    const char* error() const { return message; }
    std::size_t offset() const { return static_cast<std::size_t>(at - start); }

private:
    const char* start;
    const char* at;
    const char* end;
    std::vector<JsonPlace>* places;
    /// What the next value to be read lies in, and its key.
    JsonPlace next;
    const char* message = "";
    int depth = 0;

    bool fail(const char* reason) {
        message = reason;
        return false;
    }

    std::string_view rest() const { return {at, static_cast<std::size_t>(end - at)}; }

    void skipByteOrderMark() {
        constexpr std::string_view mark = "\xEF\xBB\xBF";
        if (rest().starts_with(mark)) {
            at += mark.size();
        }
    }

    void skipSpace() {
        while (at != end && (*at == ' ' || *at == '\n' || *at == '\r' || *at == '\t')) {
            ++at;
        }
    }

    void skipDigits() {
        while (at != end && isDigit(*at)) {
            ++at;
        }
    }

    bool readValue(JsonValue& value) {
        skipSpace();
        return places == nullptr ? readToken(value) : readPlacedToken(value);
    }

    bool readPlacedToken(JsonValue& value) {
        const std::size_t number = places->size();
        const std::size_t parent = next.parent;
        next.begin = offset();
        places->push_back(next);
        next = {.parent = number};
        const bool read = readToken(value);
        (*places)[number].end = offset();
        next = {.parent = parent};
        return read;
    }

    bool readToken(JsonValue& value) {
        if (at == end) {
            return fail("Unexpected end of input");
        }
        switch (*at) {
        case '{':
        case '[':
            return readContainer(value);
        case '"':
            value.type = JsonType::String;
            return readString(value.string);
        case 't':
        case 'f':
            return readBoolean(value);
        case 'n':
            return readWord("null", "Invalid null");
        default:
            return *at == '-' || isDigit(*at) ? readNumber(value) : fail("Unexpected token");
        }
    }

    bool readContainer(JsonValue& value) {
        if (depth == maxDepth) {
            return fail("Nesting too deep");
        }
        ++depth;
        const bool isObject = *at == '{';
        ++at;
        value.type = isObject ? JsonType::Object : JsonType::Array;
        const bool read = isObject ? readItems(objectSyntax, [&] { return readMember(value); })
                                   : readItems(arraySyntax, [&] { return readValue(value.array.emplace_back()); });
        --depth;
        return read;
    }

    template <typename ReadItem>
    bool readItems(const ContainerSyntax& syntax, ReadItem readItem) {
        skipSpace();
        if (at == end) {
            return fail(syntax.unterminated);
        }
        if (*at == syntax.close) {
            ++at;
            return true;
        }
        while (readItem()) {
            skipSpace();
            if (at == end) {
                return fail(syntax.unterminated);
            }
            const char separator = *at;
            if (separator != ',' && separator != syntax.close) {
                return fail(syntax.badSeparator);
            }
            ++at;
            if (separator == syntax.close) {
                return true;
            }
            if (at == end) {
                return fail(syntax.unterminated);
            }
        }
        return false;
    }

    bool readMember(JsonValue& object) {
        std::string key;
        if (!readKey(key)) {
            return false;
        }
        const std::size_t count = object.object.size();
        // The hint spares files with sorted keys the search.
        const auto member = object.object.try_emplace(object.object.end(), std::move(key));
        if (object.object.size() != count) {
            return readValue(member->second);
        }
        // The first of two equal keys wins. The second is still read: it must be valid JSON.
        JsonValue duplicate;
        return readValue(duplicate);
    }

    bool readKey(std::string& key) {
        skipSpace();
        if (at == end || *at != '"') {
            return fail("Expected string key");
        }
        next.keyBegin = offset();
        if (!readString(key)) {
            return false;
        }
        next.keyEnd = offset();
        skipSpace();
        if (at == end || *at != ':') {
            return fail("Expected ':' after key");
        }
        ++at;
        return true;
    }

    bool readString(std::string& out) {
        ++at;
        for (;;) {
            const char* run = at;
            while (at != end && *at != '"' && *at != '\\') {
                ++at;
            }
            out.append(run, at);
            if (at == end) {
                return fail("Unterminated string");
            }
            const bool closed = *at == '"';
            ++at;
            if (closed) {
                return true;
            }
            if (!readEscape(out)) {
                return false;
            }
        }
    }

    bool readEscape(std::string& out) {
        if (at == end) {
            return fail("Invalid escape sequence");
        }
        constexpr std::string_view letters = "\"\\/bfnrt";
        constexpr std::string_view bytes = "\"\\/\b\f\n\r\t";
        const char letter = *at;
        ++at;
        if (letter == 'u') {
            return readUnicodeEscape(out);
        }
        const std::size_t which = letters.find(letter);
        if (which == std::string_view::npos) {
            return fail("Invalid escape character");
        }
        out.push_back(bytes[which]);
        return true;
    }

    bool readUnicodeEscape(std::string& out) {
        constexpr std::size_t digits = 4;
        unsigned code = 0;
        if (rest().size() < digits || std::from_chars(at, at + digits, code, 16).ptr != at + digits) {
            return fail("Invalid unicode escape");
        }
        at += digits;
        // Commands and names are ASCII, and this reader knows no encoding: everything else becomes a question mark,
        // each half of a surrogate pair its own.
        out.push_back(code <= 0x7F ? static_cast<char>(code) : '?');
        return true;
    }

    bool readBoolean(JsonValue& value) {
        value.type = JsonType::Boolean;
        value.boolean = *at == 't';
        return readWord(value.boolean ? "true" : "false", "Invalid boolean");
    }

    /// Doesn't check what follows the word: the caller's next read does.
    bool readWord(std::string_view word, const char* failure) {
        if (!rest().starts_with(word)) {
            return fail(failure);
        }
        at += word.size();
        return true;
    }

    /// Delimits the token by its bytes alone; the conversion then judges it.
    bool readNumber(JsonValue& value) {
        const char* begin = at;
        if (*at == '-') {
            ++at;
        }
        skipDigits();
        if (at != end && *at == '.') {
            ++at;
            skipDigits();
        }
        if (at != end && (*at == 'e' || *at == 'E')) {
            ++at;
            if (at != end && (*at == '+' || *at == '-')) {
                ++at;
            }
            skipDigits();
        }
        value.type = JsonType::Number;
        return convertNumber(begin, at, value.number) || fail("Invalid number");
    }
};

JsonParseResult parseDocument(std::string_view text, std::vector<JsonPlace>* places) {
    JsonParseResult result;
    JsonCursor cursor(text, places);
    result.ok = cursor.readDocument(result.value);
    if (!result.ok) {
        result.value = JsonValue();
        result.error = cursor.error();
        result.errorOffset = cursor.offset();
    }
    return result;
}

const JsonValue* findOfType(const JsonValue& object, std::string_view key, JsonType type) {
    const JsonValue* member = find(object, key);
    return member != nullptr && member->type == type ? member : nullptr;
}

std::int32_t truncateToInt(double number) {
    using Limits = std::numeric_limits<std::int32_t>;
    // What an x86 processor gives for a number that doesn't fit; in C++ that conversion is undefined.
    const double whole = std::trunc(number);
    const bool fits = whole >= Limits::min() && whole <= Limits::max();
    return fits ? static_cast<std::int32_t>(whole) : Limits::min();
}

} // namespace

namespace JsonParser {

JsonParseResult parse(std::string_view text) {
    return parseDocument(text, nullptr);
}

JsonParseResult parse(std::string_view text, std::vector<JsonPlace>& places) {
    places.clear();
    return parseDocument(text, &places);
}

} // namespace JsonParser

const JsonValue* find(const JsonValue& object, std::string_view key) {
    if (object.type != JsonType::Object) {
        return nullptr;
    }
    const auto member = object.object.find(key);
    return member == object.object.end() ? nullptr : &member->second;
}

bool getString(const JsonValue& object, std::string_view key, std::string& out) {
    const JsonValue* member = findOfType(object, key, JsonType::String);
    if (member != nullptr) {
        out = member->string;
    }
    return member != nullptr;
}

bool getInt(const JsonValue& object, std::string_view key, std::int32_t& out) {
    const JsonValue* member = findOfType(object, key, JsonType::Number);
    if (member != nullptr) {
        out = truncateToInt(member->number);
    }
    return member != nullptr;
}

bool getObject(const JsonValue& object, std::string_view key, const JsonValue*& out) {
    const JsonValue* member = findOfType(object, key, JsonType::Object);
    if (member != nullptr) {
        out = member;
    }
    return member != nullptr;
}
