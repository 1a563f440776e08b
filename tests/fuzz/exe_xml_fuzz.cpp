#include "registration/exe_xml_registrar.h"
#include "tests/fuzz/fuzz_support.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace {

using namespace ExeXmlRegistrar;

constexpr std::string_view name = "VantrelBridgeHID";
constexpr std::string_view path = "C:\\R&D\\VantrelBridgeHID.exe";
constexpr std::string_view commandLine = "--config \"config.json\"";

struct Range {
    bool found = false;
    std::size_t start = 0;
    std::size_t end = 0;
};

Range find(std::string_view text) {
    Range range;
    range.found = findAddonBlock(text, name, range.start, range.end);
    return range;
}

void checkBlock(std::string_view text, const Range& block) {
    require(block.start < block.end && block.end <= text.size(), "a block is in the text");
    require(block.start == 0 || text[block.start - 1] == '\n', "a block begins a line");
    require(block.end == text.size() || text[block.end - 1] == '\n', "a block ends a line");
}

/// Whether `whole` is `text` with `part` in place of one range; gives the range's begin.
std::size_t placeOf(std::string_view part, std::string_view whole, std::string_view text, const Range& block) {
    const std::size_t taken = block.end - block.start;
    require(whole.size() == text.size() - taken + part.size(), "one entry in place of one range");
    std::size_t at = block.found ? block.start : whole.find(part);
    // An equal text may stand in front of it already.
    while (!block.found && at != std::string_view::npos && text.substr(at) != whole.substr(at + part.size())) {
        at = whole.find(part, at + 1);
    }
    require(at != std::string_view::npos && whole.substr(at, part.size()) == part, "the entry is there");
    require(whole.substr(0, at) == text.substr(0, at), "nothing in front of it changes");
    require(whole.substr(at + part.size()) == text.substr(at + taken), "nothing behind it changes");
    return at;
}

void checkRemoval(std::string_view text, const Range& block) {
    const std::string rest = removeRegistration(text, name);
    if (!block.found) {
        require(rest == text, "without an entry nothing is removed");
        return;
    }
    const std::string expected = std::string(text.substr(0, block.start)).append(text.substr(block.end));
    require(rest == expected, "the block goes and nothing else");
}

bool mentionsEntries(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char byte) { return static_cast<char>(std::tolower(byte)); });
    return text.find("launch.addon>") != std::string::npos;
}

/// On a line of its own in a text without any entry's tags, the entry goes both ways without a trace.
void checkReturn(std::string_view text, const std::string& once, std::size_t at) {
    const bool sharesLine = at > 0 && text[at - 1] != '\n';
    if (sharesLine || mentionsEntries(std::string(text))) {
        return;
    }
    require(applyRegistration(once, name, path, commandLine) == once, "twice equals once");
    require(removeRegistration(once, name) == text, "taken out again it leaves the text as it was");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = inputText(data, size);
    const Range block = find(text);
    if (block.found) {
        checkBlock(text, block);
    }
    checkRemoval(text, block);
    const std::string entry = renderAddonEntry(name, path, commandLine);
    const std::string once = applyRegistration(text, name, path, commandLine);
    if (text.find_first_not_of(" \t\r\n\v\f") == std::string_view::npos) {
        require(once == applyRegistration("", name, path, commandLine), "a blank file is made afresh");
        return 0;
    }
    checkReturn(text, once, placeOf(entry, once, text, block));
    return 0;
}
