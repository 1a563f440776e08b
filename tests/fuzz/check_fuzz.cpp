// The first byte chooses the file: 'c' config.json, 'm' the event map, anything else the command file.

#include "companion/check/bridge_errors.h"
#include "companion/check/button_check.h"
#include "companion/check/config_check.h"
#include "companion/check/event_map_check.h"
#include "config/app_config.h"
#include "config/button_config.h"
#include "config/hid_event_map.h"
#include "tests/fuzz/fuzz_support.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

BridgeReader readerOf(char kind) {
    switch (kind) {
    case 'c':
        return [](const std::string& text, std::string& error) {
            AppConfig config;
            return parseAppConfig(text, "config.json", config, error);
        };
    case 'm':
        return [](const std::string& text, std::string& error) { return HidEventMap().parse(text, error); };
    default:
        return [](const std::string& text, std::string& error) { return ButtonConfig().parse(text, error); };
    }
}

void findMore(char kind, const JsonDocument& document, Findings& findings) {
    if (kind == 'c') {
        checkConfig(document, findings);
    } else if (kind == 'm') {
        checkEventMap(document, findings);
    } else {
        checkButtons(document, {{"AP"}, {"AUDIO"}}, findings);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input = inputText(data, size);
    const char kind = input.empty() ? 'b' : input.front();
    const JsonDocument document("file", std::string(input.substr(input.empty() ? 0 : 1)));
    const BridgeReader reader = readerOf(kind);
    std::string accepted;
    Findings findings = bridgeErrors(document, reader, accepted);
    std::string error;
    require(findings.empty() == reader(document.text(), error),
            "an error is found exactly if the bridge refuses the file");
    require(findings.empty() || findings.front().message == error, "the first error is the bridge's");
    if (document.root() != nullptr && document.root()->isObject()) {
        findMore(kind, document, findings);
    }
    for (const Finding& finding : findings) {
        require(finding.caret <= finding.lineText.size(), "a place is in its line");
        require(!finding.message.empty() && !finding.code.empty(), "a finding says what it is");
    }
    return 0;
}
