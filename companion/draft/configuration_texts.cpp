#include "companion/draft/configuration_texts.h"

#include "companion/draft/json_edit.h"
#include "companion/sample/sample_set.h"
#include "config/hid_event_map.h"

namespace {

/// An object or array that shows what is added to it on lines of its own.
const std::string emptyObject = "{\n  }";
const std::string emptyArray = "[\n  ]";

} // namespace

ConfigurationTexts sampleTexts() {
    const auto text = [](const char* name) { return sampleSet().at(name); };
    return {{text("config.json"), text("hid_event_map.json"), text("buttons.json")}};
}

ConfigurationTexts emptyTexts() {
    ConfigurationTexts texts = sampleTexts();
    for (const ConfigurationPart part : configurationParts) {
        // Where the new files go, there are no schemas.
        removeJsonValue(texts[part], {keyStep("$schema")});
    }
    removeJsonValue(texts[ConfigurationPart::Settings], {keyStep("devices")});
    setJsonValue(texts[ConfigurationPart::EventMap], {keyStep("control_ids")}, emptyObject);
    setJsonValue(texts[ConfigurationPart::Commands], {keyStep("buttons")}, emptyArray);
    setJsonValue(texts[ConfigurationPart::Commands], {keyStep("knobs")}, emptyArray);
    return texts;
}

std::map<std::int32_t, std::string> controlNames(const std::string& eventMap) {
    HidEventMap map;
    std::string ignored;
    map.parse(eventMap, ignored);
    return map.controlIds;
}

const std::map<std::int32_t, std::string>& sampleControlNames() {
    static const std::map<std::int32_t, std::string> names = controlNames(sampleTexts()[ConfigurationPart::EventMap]);
    return names;
}
