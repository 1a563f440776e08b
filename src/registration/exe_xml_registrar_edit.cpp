// The edit itself: takes and returns texts.

#include "registration/exe_xml_registrar.h"
#include "text/ascii.h"

#include <algorithm>

namespace {

constexpr std::string_view addonOpenTag = "<Launch.Addon>";
constexpr std::string_view addonCloseTag = "</Launch.Addon>";
constexpr std::string_view nameOpenTag = "<Name>";
constexpr std::string_view nameCloseTag = "</Name>";
constexpr std::string_view documentCloseTag = "</SimBase.Document>";

/// What the simulator itself writes into a new file.
constexpr std::string_view emptyDocument = "<?xml version=\"1.0\" encoding=\"Windows-1252\"?>\r\n"
                                           "<SimBase.Document Type=\"SimConnect\" version=\"1,0\">\r\n"
                                           "    <Descr>SimConnect</Descr>\r\n"
                                           "    <Filename>EXE.xml</Filename>\r\n"
                                           "    <Disabled>False</Disabled>\r\n"
                                           "    <Launch.ManualLoad>False</Launch.ManualLoad>\r\n"
                                           "</SimBase.Document>\r\n";

/// The lowest index from `from` on, which is at most the text's length; npos when there is none.
std::size_t findIgnoringCase(std::string_view text, std::string_view needle, std::size_t from) {
    const std::string_view rest = text.substr(from);
    const auto found = std::search(rest.begin(), rest.end(), needle.begin(), needle.end(), sameLetter);
    return found == rest.end() ? std::string_view::npos : from + static_cast<std::size_t>(found - rest.begin());
}

/// The name in an entry that reaches from its first tag to its last; empty when it has none. Reads nothing past the
/// entry, so a scan of many nameless entries stays linear.
std::string_view nameOf(std::string_view block) {
    const std::size_t open = findIgnoringCase(block, nameOpenTag, 0);
    if (open == std::string_view::npos) {
        return {};
    }
    const std::size_t close = findIgnoringCase(block, nameCloseTag, open);
    if (close == std::string_view::npos) {
        return {};
    }
    const std::size_t begin = open + nameOpenTag.size();
    return trimmed(block.substr(begin, close - begin));
}

/// The index after the last line feed before `index`, where there is none; 0 on the first line.
std::size_t lineStart(std::string_view text, std::size_t index) {
    const std::size_t lineFeed = text.rfind('\n', index);
    return lineFeed == std::string_view::npos ? 0 : lineFeed + 1;
}

/// The index after the first line feed at or after `index`; the text's length on the last line.
std::size_t lineEnd(std::string_view text, std::size_t index) {
    const std::size_t lineFeed = text.find('\n', index);
    return lineFeed == std::string_view::npos ? text.size() : lineFeed + 1;
}

/// Where a new entry goes.
std::size_t insertionPoint(std::string_view text) {
    const std::size_t tag = findIgnoringCase(text, documentCloseTag, 0);
    if (tag == std::string_view::npos) {
        return text.size();
    }
    const std::size_t start = lineStart(text, tag);
    return start == 0 ? tag : start;
}

void appendLine(std::string& entry, const char* open, std::string_view value, const char* close) {
    entry.append("        ").append(open).append(ExeXmlRegistrar::escapeXmlText(value)).append(close).append("\r\n");
}

} // namespace

namespace ExeXmlRegistrar {

std::string escapeXmlText(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size());
    for (const char byte : text) {
        switch (byte) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        default:
            escaped += byte;
        }
    }
    return escaped;
}

bool findAddonBlock(std::string_view text, std::string_view name, std::size_t& start, std::size_t& end) {
    const std::string wanted = escapeXmlText(name);
    std::size_t position = 0;
    while (true) {
        const std::size_t open = findIgnoringCase(text, addonOpenTag, position);
        if (open == std::string_view::npos) {
            return false;
        }
        const std::size_t close = findIgnoringCase(text, addonCloseTag, open);
        if (close == std::string_view::npos) {
            return false;
        }
        const std::size_t blockEnd = close + addonCloseTag.size();
        if (equalsIgnoringCase(wanted, nameOf(text.substr(open, blockEnd - open)))) {
            start = lineStart(text, open);
            end = lineEnd(text, blockEnd);
            return true;
        }
        position = blockEnd;
    }
}

std::string renderAddonEntry(std::string_view name, std::string_view path, std::string_view commandLine) {
    std::string entry = "    <Launch.Addon>\r\n";
    appendLine(entry, "<Name>", name, "</Name>");
    entry += "        <Disabled>False</Disabled>\r\n";
    appendLine(entry, "<Path>", path, "</Path>");
    if (!commandLine.empty()) {
        appendLine(entry, "<CommandLine>", commandLine, "</CommandLine>");
    }
    return entry + "    </Launch.Addon>\r\n";
}

std::string applyRegistration(std::string_view text, std::string_view name, std::string_view path,
                              std::string_view commandLine) {
    const std::string_view source = trimmed(text).empty() ? emptyDocument : text;
    std::size_t start = 0;
    std::size_t end = 0;
    if (!findAddonBlock(source, name, start, end)) {
        start = end = insertionPoint(source);
    }
    return std::string(source.substr(0, start))
        .append(renderAddonEntry(name, path, commandLine))
        .append(source.substr(end));
}

std::string removeRegistration(std::string_view text, std::string_view name) {
    std::string rest(text);
    std::size_t start = 0;
    std::size_t end = 0;
    if (findAddonBlock(text, name, start, end)) {
        rest.erase(start, end - start);
    }
    return rest;
}

} // namespace ExeXmlRegistrar
