#include "companion/doctor/xml_blocks.h"

#include "text/ascii.h"

#include <algorithm>
#include <array>
#include <utility>

namespace {

std::string withoutEntities(std::string text) {
    // The ampersand last, so that "&amp;lt;" is "&lt;".
    constexpr std::array<std::pair<std::string_view, char>, 5> entities{
        {{"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}, {"&amp;", '&'}}};
    for (const auto& [entity, letter] : entities) {
        for (std::size_t at = text.find(entity); at != std::string::npos; at = text.find(entity, at + 1)) {
            text.replace(at, entity.size(), 1, letter);
        }
    }
    return text;
}

/// The members whose text has no tags inside: "<name>text</name>".
void readMembers(std::string_view block, XmlBlock& into) {
    for (std::size_t open = block.find('<'); open != std::string_view::npos; open = block.find('<', open + 1)) {
        const std::size_t nameEnd = block.find_first_of("<>", open + 1);
        if (nameEnd == std::string_view::npos || block[nameEnd] == '<') {
            continue;
        }
        const std::string name = lowerCased(block.substr(open + 1, nameEnd - open - 1));
        const std::size_t close = block.find('<', nameEnd);
        const std::string closingTag = "</" + name + ">";
        if (close != std::string_view::npos && lowerCased(block.substr(close, closingTag.size())) == closingTag) {
            const std::string_view text = block.substr(nameEnd + 1, close - nameEnd - 1);
            into.members.try_emplace(name, withoutEntities(std::string(trimmed(text))));
        }
    }
}

/// Walks over the comments of a text. Positions that are asked for must not fall.
class Comments {
public:
    explicit Comments(std::string_view text) : text(text) { next(0); }

    bool contain(std::size_t position) {
        while (end != std::string_view::npos && end <= position) {
            next(end);
        }
        return begin <= position;
    }

private:
    std::string_view text;
    std::size_t begin = 0;
    std::size_t end = 0;

    void next(std::size_t from) {
        begin = std::min(text.find("<!--", from), text.size());
        end = text.find("-->", begin);
    }
};

} // namespace

std::string XmlBlock::member(std::string_view lowerCaseName) const {
    const auto found = members.find(lowerCaseName);
    return found == members.end() ? std::string() : found->second;
}

bool XmlBlock::isDisabled() const {
    return equalsIgnoringCase(member("disabled"), "true");
}

std::vector<XmlBlock> xmlBlocks(std::string_view text, std::string_view name) {
    const std::string lower = lowerCased(text);
    const std::string openTag = "<" + lowerCased(name) + ">";
    const std::string closeTag = "</" + lowerCased(name) + ">";
    Comments comments(text);
    std::vector<XmlBlock> blocks;
    std::size_t open = lower.find(openTag);
    std::size_t close = std::min(lower.find(closeTag), lower.size());
    while (open != std::string::npos) {
        const std::size_t nextOpen = lower.find(openTag, open + 1);
        close = close < open ? std::min(lower.find(closeTag, open), lower.size()) : close;
        XmlBlock block;
        block.isClosed = close < std::min(nextOpen, lower.size());
        block.isInComment = comments.contain(open);
        const std::size_t begin = open + openTag.size();
        readMembers(text.substr(begin, std::min({close, nextOpen, lower.size()}) - begin), block);
        blocks.push_back(std::move(block));
        open = nextOpen;
    }
    return blocks;
}

bool hasDocumentEnd(std::string_view text) {
    return lowerCased(text).find("</simbase.document>") != std::string::npos;
}

bool isUtf16(std::string_view text) {
    return text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF");
}
