#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

/// An element of one of the simulator's XML files, with its simple members. These files are edited by many programs and
/// often broken, so the text is searched for tags, as the registration does, not parsed.
struct XmlBlock {
    /// The texts of its members by lower-case name; of several, the first.
    std::map<std::string, std::string, std::less<>> members;
    /// Its closing tag is there, before the next one opens.
    bool isClosed = false;
    bool isInComment = false;

    /// Empty when there is no such member.
    std::string member(std::string_view lowerCaseName) const;
    bool isDisabled() const;
};

/// All elements of that name, which matches in any case.
std::vector<XmlBlock> xmlBlocks(std::string_view text, std::string_view name);

/// Whether the text has the document's closing tag.
bool hasDocumentEnd(std::string_view text);

/// Whether the text is in UTF-16, which neither the simulator's other programs nor the bridge understand.
bool isUtf16(std::string_view text);
