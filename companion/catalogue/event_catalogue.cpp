#include "companion/catalogue/event_catalogue.h"

#include "companion/catalogue/catalogue_files.h"
#include "config/json.h"
#include "simulation/scenarios/nearest_word.h"
#include "text/ascii.h"

#include <optional>

namespace {

std::string textOf(const JsonValue& object, std::string_view key) {
    std::string text;
    getString(object, key, text);
    return text;
}

CatalogueEvent readEvent(const JsonValue& entry, const std::string& prefix, const std::string& group) {
    CatalogueEvent event;
    event.name = prefix + textOf(entry, "name");
    event.group = group;
    event.description = textOf(entry, "description");
    event.sure = textOf(entry, "sure");
    if (const JsonValue* const values = find(entry, "values")) {
        for (const JsonValue& value : values->array) {
            event.values.push_back(textOf(value, "text"));
        }
    }
    return event;
}

} // namespace

const EventCatalogue& EventCatalogue::instance() {
    static const EventCatalogue catalogue;
    return catalogue;
}

EventCatalogue::EventCatalogue() {
    for (const auto& [name, content] : catalogueFiles()) {
        load(content);
    }
}

void EventCatalogue::load(std::string_view json) {
    const JsonValue root = JsonParser::parse(json).value;
    const std::string prefix = textOf(root, "prefix");
    const JsonValue* const groups = ::find(root, "groups");
    for (const JsonValue& group : groups->array) {
        for (const JsonValue& entry : ::find(group, "events")->array) {
            all.push_back(readEvent(entry, prefix, textOf(group, "group")));
            byName.emplace(upperCased(all.back().name), all.size() - 1);
        }
    }
}

const CatalogueEvent* EventCatalogue::find(std::string_view name) const {
    const auto found = byName.find(upperCased(name));
    return found == byName.end() ? nullptr : &all[found->second];
}

std::string EventCatalogue::nearest(std::string_view name) const {
    const std::string wanted = upperCased(name);
    std::vector<std::string_view> known;
    known.reserve(byName.size());
    for (const auto& [key, index] : byName) {
        known.push_back(key);
    }
    const std::optional<std::string_view> near = nearestWord(wanted, known);
    return near ? all[byName.find(*near)->second].name : "";
}
