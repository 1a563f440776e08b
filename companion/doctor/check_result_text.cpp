#include "companion/doctor/check_result_text.h"

#include "companion/json/json_text.h"
#include "text/wording.h"

#include <algorithm>

namespace {

struct MarkLook {
    const char* unicode;
    const char* ascii;
    const char* colour;
};

MarkLook lookOf(Mark mark) {
    switch (mark) {
    case Mark::Warning:
        return {"!", "[!] ", "\033[1;33m"};
    case Mark::Fault:
        return {"✗", "[x] ", "\033[1;31m"};
    case Mark::Good:
        break;
    }
    return {"✓", "[ok]", "\033[1;32m"};
}

std::string markText(Mark mark, TextStyle style) {
    const MarkLook look = lookOf(mark);
    const std::string text = style.unicode ? look.unicode : look.ascii;
    return style.colour ? look.colour + text + "\033[0m" : text;
}

/// A log or a path may contain bytes that would control the terminal.
std::string withoutControls(std::string text) {
    std::ranges::replace_if(
        text, [](char byte) { return (byte >= 0 && byte < ' ') || byte == '\x7F'; }, '?');
    return text;
}

std::string summary(const CheckResults& results) {
    const auto count = [&](Mark mark) {
        return static_cast<std::size_t>(std::ranges::count(results, mark, &CheckResult::mark));
    };
    const std::size_t faults = count(Mark::Fault);
    const std::size_t warnings = count(Mark::Warning);
    if (faults + warnings == 0) {
        return "Everything looks good.\n";
    }
    return countText(faults, "fault") + ", " + countText(warnings, "warning") + ".\n";
}

std::string inJson(const std::string& text) {
    return nlohmann::ordered_json::parse(jsonLine(text)).get<std::string>();
}

} // namespace

std::string checkResultsText(const CheckResults& results, TextStyle style) {
    const std::string indent(style.unicode ? 4 : 7, ' ');
    std::string text;
    for (const CheckResult& result : results) {
        text += markText(result.mark, style) + ' ' + withoutControls(result.title + ": " + result.found) + '\n';
        text += result.remedy.empty() ? "" : indent + withoutControls(result.remedy) + '\n';
    }
    return text + '\n' + summary(results);
}

Repair repairInJson(const Repair& repair) {
    return {inJson(repair.code), inJson(repair.path), inJson(repair.text)};
}

std::string checkResultsJson(const CheckResults& results) {
    nlohmann::ordered_json array = nlohmann::ordered_json::array();
    for (const CheckResult& result : results) {
        array.push_back({{"mark", markName(result.mark)},
                         {"code", result.code},
                         {"title", result.title},
                         {"found", result.found},
                         {"remedy", result.remedy}});
        if (!result.repair.code.empty()) {
            array.back()["repair"] = {
                {"code", result.repair.code}, {"path", result.repair.path}, {"text", result.repair.text}};
        }
    }
    return jsonDocument(array);
}
