#include "companion/setup/setup_state.h"

#include "companion/catalogue/event_catalogue.h"
#include "companion/check/rpn_check.h"
#include "companion/draft/line_diff.h"
#include "companion/json/json_text.h"
#include "companion/page/page_values.h"
#include "config/names.h"
#include "platform/file_system.h"

#include <algorithm>
#include <array>
#include <utility>

namespace {

using Json = nlohmann::ordered_json;

Json lightOf(const LedCommand& light) {
    Json json;
    for (const auto& [name, value] : lightMembers(light)) {
        json[name] = value;
    }
    return json;
}

Json effectOf(const LedEffect& effect) {
    return {{"effect", normalizeName(effect.effect)},
            {"brightness", effect.brightness},
            {"count", effect.param0},
            {"periodMs", effect.param1},
            {"level", effect.param2}};
}

Json profilesOf(const OutputsConfig& outputs) {
    Json array = Json::array();
    for (const auto& [name, profile] : outputs.profiles) {
        const BacklightProfile& backlight = profile.backlight;
        array.push_back({{"name", name},
                         {"backlight",
                          {{"mode", normalizeName(backlight.mode)},
                           {"min", backlight.min},
                           {"max", backlight.max},
                           {"default", backlight.defaultValue},
                           {"value", backlight.value},
                           {"scale", backlight.scale}}},
                         {"simDisconnected", effectOf(profile.simDisconnected)},
                         {"batteryOff", effectOf(profile.batteryOff)}});
    }
    return array;
}

Json boardsOf(const std::vector<ShownBoard>& boards) {
    Json array = Json::array();
    for (const ShownBoard& board : boards) {
        array.push_back({{"name", board.name},
                         {"virtual", board.isVirtual},
                         {"role", board.role},
                         {"light", board.light ? lightOf(*board.light) : Json()}});
    }
    return array;
}

Json commandsOf(const ListedControl& control) {
    Json array = Json::array();
    for (const ListedCommand& command : control.commands) {
        array.push_back({{"action", command.action}, {"role", command.role}, {"command", command.command}});
    }
    return array;
}

/// The named controls and those that were used without having a name, by number.
Json controlsOf(const SetupState& state) {
    std::map<std::int32_t, Json> byNumber;
    for (const ListedControl& control : state.configuration->controls()) {
        byNumber[control.number] = {{"number", control.number},
                                    {"name", control.name},
                                    {"knob", control.isKnob},
                                    {"used", false},
                                    {"commands", commandsOf(control)}};
    }
    for (const auto& [number, isKnob] : state.used) {
        if (!byNumber.contains(number)) {
            byNumber[number] = {{"number", number}, {"name", ""}, {"knob", false}, {"commands", Json::array()}};
        }
        Json& control = byNumber[number];
        control["knob"] = control["knob"].get<bool>() || isKnob;
        control["used"] = true;
    }
    Json array = Json::array();
    for (auto& [number, control] : byNumber) {
        array.push_back(std::move(control));
    }
    return array;
}

Json findingsOf(const Findings& findings) {
    Json array = Json::array();
    for (const Finding& finding : findings) {
        array.push_back({{"file", FileSystem::fileName(finding.file)},
                         {"line", finding.line},
                         {"severity", severityName(finding.severity)},
                         {"message", finding.message},
                         {"hint", finding.hint}});
    }
    return array;
}

Json configurationOf(const EditedConfiguration& configuration, const std::string& changedOnDisk) {
    Json json{{"path", configuration.files().paths()[ConfigurationPart::Settings]},
              {"problem", configuration.problem()},
              {"changedOnDisk", changedOnDisk}};
    const AppConfig& settings = configuration.forBridge()->settings;
    json["vendorId"] = settings.hid.vid;
    json["productId"] = settings.hid.pid;
    json["unsaved"] = configuration.hasUnsavedChanges();
    if (configuration.problem().empty()) {
        json["exists"] = configuration.files().exist();
        json["changed"] = configuration.isChanged();
        json["canUndo"] = configuration.draft().canUndo();
        json["starts"] = configuration.verdict().bridgeStarts;
        json["refusal"] = configuration.verdict().refusal;
        json["findings"] = findingsOf(configuration.verdict().findings);
        json["profiles"] = profilesOf(settings.outputs);
    }
    return json;
}

Json progressOf(const SetupProgress& progress, const std::vector<RegistrationPlace>& places) {
    return {
        {"first", progress.isFirst},     {"pressed", progress.pressed},
        {"assigned", progress.assigned}, {"tried", progress.tried},
        {"saved", progress.saved},       {"registered", std::ranges::any_of(places, &RegistrationPlace::isRegistered)}};
}

Json bridgeOf(const SetupState& state) {
    Json places = Json::array();
    const SetupSurroundings& surroundings = state.surroundings;
    const RunningBridge bridge = surroundings.bridge.value_or(RunningBridge());
    for (const RegistrationPlace& place : surroundings.places) {
        places.push_back({{"path", place.path}, {"registered", place.isRegistered}});
    }
    return {{"program", state.bridgeProgram},
            {"exists", surroundings.bridgeExists},
            {"running", surroundings.bridge || surroundings.bridgeIsOurs},
            {"ours", surroundings.bridgeIsOurs},
            {"process", bridge.process},
            {"ofSimulator", bridge.isOfSimulator},
            {"ending", state.howBridgeEnds},
            {"places", std::move(places)}};
}

Json diffLinesOf(const std::vector<DiffLine>& lines) {
    constexpr std::array<const char*, 3> kinds{"kept", "removed", "added"};
    Json array = Json::array();
    for (const DiffLine& line : lines) {
        array.push_back(
            {{"kind", kinds[static_cast<std::size_t>(line.kind)]}, {"line", line.number}, {"text", line.text}});
    }
    return array;
}

} // namespace

const char* linkStateText(LinkState link) {
    switch (link) {
    case LinkState::Starting:
        return "is being looked for";
    case LinkState::NoSimulator:
        return "doesn't run";
    case LinkState::Refused:
        return "refuses the connection";
    case LinkState::ModuleSilent:
        return "has a MobiFlight module that doesn't answer, or none";
    case LinkState::Ready:
        break;
    }
    return "is ready";
}

std::string stateJson(const SetupState& state) {
    const SetupSurroundings& surroundings = state.surroundings;
    const bool isEditable = state.configuration->problem().empty();
    return jsonLine(
        {{"configuration", configurationOf(*state.configuration, surroundings.changedOnDisk)},
         {"progress", progressOf(state.progress, surroundings.places)},
         {"boards", boardsOf(state.boards)},
         {"controls", isEditable ? controlsOf(state) : Json::array()},
         {"bridge", bridgeOf(state)},
         {"simulator", {{"virtual", state.simulatorIsVirtual}, {"state", linkStateText(surroundings.simulator)}}}});
}

std::string differenceJson(const EditedConfiguration& configuration) {
    if (!configuration.problem().empty()) {
        return "[]";
    }
    Json array = Json::array();
    for (const ConfigurationPart part : configurationParts) {
        if (configuration.files().wouldWrite(part, configuration.draft().texts())) {
            const std::vector<DiffLine> lines =
                lineDiff(configuration.files().textOnDisk(part), configuration.draft().texts()[part]);
            array.push_back({{"path", configuration.files().paths()[part]}, {"lines", diffLinesOf(lines)}});
        }
    }
    return jsonLine(array);
}

std::string changesJson(const std::vector<RegistrationChange>& changes) {
    Json array = Json::array();
    for (const RegistrationChange& change : changes) {
        array.push_back({{"path", change.path}, {"lines", diffLinesOf(change.lines)}});
    }
    return jsonLine(array);
}

std::string catalogueJson() {
    Json events = Json::array();
    for (const CatalogueEvent& event : EventCatalogue::instance().events()) {
        events.push_back({{"name", event.name},
                          {"group", event.group},
                          {"description", event.description},
                          {"values", event.values},
                          {"sure", event.sure}});
    }
    Json names = Json::object();
    for (const auto& [number, name] : sampleControlNames()) {
        names[std::to_string(number)] = name;
    }
    return jsonLine({{"events", std::move(events)}, {"names", std::move(names)}});
}

std::string remarksJson(const std::string& command) {
    Json array = Json::array();
    for (const CommandRemark& remark : checkCommand(command)) {
        array.push_back({{"severity", severityName(remark.severity)},
                         {"offset", remark.offset},
                         {"message", remark.message},
                         {"hint", remark.hint}});
    }
    return jsonLine(array);
}
