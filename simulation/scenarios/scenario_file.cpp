#include "simulation/scenarios/scenario_file.h"

#include "config/hid_event_map.h"
#include "platform/file_system.h"
#include "simulation/scenarios/json_text.h"
#include "simulation/scenarios/scenario_boards.h"
#include "simulation/scenarios/scenario_expectations.h"
#include "simulation/scenarios/scenario_inputs.h"
#include "simulation/scenarios/scenario_line.h"

#include <algorithm>
#include <array>
#include <utility>

namespace {

constexpr long highestControlId = 65535;

/// Reads one scenario from its first line to its last.
class ScenarioReader {
public:
    ScenarioReader(std::string_view text, Scenario& scenario) : text(text), scenario(scenario) {}

    void read() {
        while (const auto line = takeLine()) {
            readLine(*line);
        }
    }

private:
    std::string_view text;
    Scenario& scenario;
    std::size_t lineNumber = 0;
    bool titleRead = false;

    std::optional<std::string_view> takeLine() {
        if (text.empty()) {
            return std::nullopt;
        }
        ++lineNumber;
        const std::size_t end = text.find('\n');
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        return line;
    }

    void readLine(std::string_view content) {
        ScenarioLine line(content, lineNumber);
        if (line.peek().starts_with('#')) {
            readComment(line.whole());
        } else if (line.peek() == ">" || line.peek() == "<") {
            readStep(line);
        } else if (!line.atEnd()) {
            readDeclaration(line);
        }
    }

    void readComment(const std::string& comment) {
        if (!std::exchange(titleRead, true)) {
            scenario.title = comment.substr(std::min(comment.find_first_not_of("# "), comment.size()));
        }
    }

    void readStep(ScenarioLine& line) {
        if (line.word("a step") == ">") {
            scenario.steps.emplace_back(parseInput(line, scenario, lineNumber));
            return;
        }
        if (line.peek() == "nothing") {
            line.word("nothing");
            line.end();
            scenario.steps.emplace_back(ScenarioBlock{lineNumber, {}});
            return;
        }
        openBlock().expected.push_back(parseExpectation(line, scenario, lineNumber));
    }

    /// The block that the line before belongs to, or a new one.
    ScenarioBlock& openBlock() {
        auto* last = scenario.steps.empty() ? nullptr : std::get_if<ScenarioBlock>(&scenario.steps.back());
        if (last == nullptr || last->expected.empty()) {
            scenario.steps.emplace_back(ScenarioBlock{lineNumber, {}});
            last = &std::get<ScenarioBlock>(scenario.steps.back());
        }
        return *last;
    }

    void readDeclaration(ScenarioLine& line) {
        using Reader = void (ScenarioReader::*)(ScenarioLine&);
        static constexpr std::array<std::string_view, 13> words{"board",  "control", "command",  "list",    "config",
                                                                "file",   "folder",  "without",  "console", "hotplug",
                                                                "module", "watch",   "unchecked"};
        static constexpr std::array<Reader, 13> readers{
            &ScenarioReader::readBoard,    &ScenarioReader::readControl, &ScenarioReader::readCommand,
            &ScenarioReader::readListed,   &ScenarioReader::readConfig,  &ScenarioReader::readFile,
            &ScenarioReader::readFolder,   &ScenarioReader::readWithout, &ScenarioReader::readConsole,
            &ScenarioReader::readHotPlug,  &ScenarioReader::readModule,  &ScenarioReader::readWatch,
            &ScenarioReader::readUnchecked};
        const std::size_t chosen = line.choice("declaration", words);
        // A board may come later: a record is written while it is seen.
        if (!scenario.steps.empty() && words.at(chosen) != "board") {
            line.fail("declarations come before the first step; a step begins with > or <");
        }
        (this->*readers[chosen])(line);
    }

    void readBoard(ScenarioLine& line) {
        RigBoard board = parseBoard(line, scenario.boards.size() + 1);
        const auto same = [&board](const RigBoard& other) { return other.name == board.name; };
        if (std::any_of(scenario.boards.begin(), scenario.boards.end(), same)) {
            line.fail("there is already a board \"" + board.name + '"');
        }
        scenario.boards.push_back(std::move(board));
    }

    void readControl(ScenarioLine& line) {
        ScenarioControl control;
        control.id = static_cast<std::uint16_t>(line.number("control number", 0, highestControlId));
        const auto same = [&control](const ScenarioControl& other) { return other.id == control.id; };
        if (std::any_of(scenario.controls.begin(), scenario.controls.end(), same)) {
            line.fail("control " + std::to_string(control.id) + " already has a name");
        }
        needEquals(line);
        control.name = line.rest("the control's name");
        scenario.controls.push_back(std::move(control));
    }

    /// CONTROL ACTION [ROLE] = TEXT, where the text may be empty.
    void readCommand(ScenarioLine& line) {
        ScenarioCommand command;
        command.control = line.word("the control's name");
        command.action = line.word("the action, such as PRESS or CW");
        command.role = line.peek() == "=" ? "DEFAULT" : line.word("the role");
        needEquals(line);
        command.text = line.atEnd() ? "" : line.rest("the command");
        scenario.commands.push_back(std::move(command));
    }

    void readListed(ScenarioLine& line) {
        scenario.commands.push_back({line.rest("the name of a control without commands"), "", "", ""});
    }

    /// Either a block of JSON or PATH = VALUE.
    void readConfig(ScenarioLine& line) {
        if (line.peek().starts_with("<<")) {
            scenario.settings.push_back(parseJson(line, readBlock(line)));
            return;
        }
        const std::string path = line.word("a setting, such as mobiflight.enabled");
        needEquals(line);
        JsonValue value = parseJson(line, line.rest("the setting's value as JSON"));
        for (std::string_view left = path; !left.empty();) {
            const std::size_t dot = left.rfind('.');
            JsonValue outer = jsonObject();
            outer.object[std::string(left.substr(dot + 1))] = std::move(value);
            value = std::move(outer);
            left = left.substr(0, dot == std::string_view::npos ? 0 : dot);
        }
        scenario.settings.push_back(std::move(value));
    }

    void readFile(ScenarioLine& line) {
        const std::string name = line.word("the file's name");
        scenario.files[name] = readBlock(line);
    }

    /// The three files of a folder: its settings as a layer, the other two verbatim, their controls by name.
    void readFolder(ScenarioLine& line) {
        const std::string folder = FileSystem::join(FileSystem::parentPath(scenario.path), line.rest("a folder"));
        scenario.settings.push_back(parseJson(line, fileOf(line, folder, "config.json")));
        scenario.files["buttons.json"] = fileOf(line, folder, "buttons.json");
        const std::string& mapText = scenario.files["hid_event_map.json"] = fileOf(line, folder, "hid_event_map.json");
        HidEventMap map;
        std::string error;
        if (!map.parse(mapText, error)) {
            line.fail(error);
        }
        for (const auto& [id, name] : map.controlIds) {
            if (id >= 0 && id <= highestControlId) {
                scenario.controls.push_back({static_cast<std::uint16_t>(id), name});
            }
        }
    }

    static std::string fileOf(const ScenarioLine& line, const std::string& folder, const std::string& name) {
        const std::string path = FileSystem::join(folder, name);
        std::string content;
        if (!FileSystem::readFile(path, content)) {
            line.fail(path + " can't be read");
        }
        return content;
    }

    void readWithout(ScenarioLine& line) {
        static constexpr std::array<std::string_view, 3> files{"config.json", "buttons.json", "hid_event_map.json"};
        scenario.missingFiles.emplace(files[line.choice("file", files)]);
        line.end();
    }

    void readConsole(ScenarioLine& line) {
        line.end();
        scenario.consoleMode = true;
    }

    void readHotPlug(ScenarioLine& line) {
        scenario.hotPlugNotifications = line.onOff();
        line.end();
    }

    void readModule(ScenarioLine& line) {
        static constexpr std::array<std::string_view, 1> known{"missing"};
        line.choice("state of the module", known);
        line.end();
        scenario.moduleInstalled = false;
    }

    void readWatch(ScenarioLine& line) {
        static constexpr std::array<std::string_view, 2> known{"dummies", "log"};
        static constexpr std::array<std::string_view, 2> levels{"info", "debug"};
        if (line.choice("thing to watch", known) == 0) {
            line.end();
            scenario.watch.dummies = true;
            return;
        }
        const bool info = line.choice("level to watch", levels) == 0;
        auto& texts = info ? scenario.watch.infoTexts : scenario.watch.debugTexts;
        texts.push_back(line.atEnd() ? "" : line.rest("a text"));
    }

    void readUnchecked(ScenarioLine& line) {
        line.end();
        scenario.unchecked = true;
    }

    static void needEquals(ScenarioLine& line) {
        if (const std::string mark = line.word("\"=\""); mark != "=") {
            line.fail("expected \"=\" with blanks around it, not \"" + mark + '"');
        }
    }

    /// The lines between "<<WORD" and a line of that word alone.
    std::string readBlock(ScenarioLine& line) {
        const std::string opening = line.word("<<END");
        if (opening.size() < 3 || !opening.starts_with("<<")) {
            line.fail("expected <<END, which begins a block that a line END ends");
        }
        line.end();
        const std::string closing = opening.substr(2);
        std::string block;
        while (const auto content = takeLine()) {
            if (ScenarioLine(*content, lineNumber).whole() == closing) {
                return block;
            }
            block.append(*content).append("\n");
        }
        line.fail("no line " + closing + " ends this block");
    }

    static JsonValue parseJson(const ScenarioLine& line, const std::string& json) {
        JsonParseResult result = JsonParser::parse(json);
        if (!result.ok) {
            line.fail("this isn't a JSON value (" + result.error + "): put text in double quotes");
        }
        return std::move(result.value);
    }
};

} // namespace

bool parseScenario(const std::string& path, std::string_view text, Scenario& scenario, std::string& error) {
    scenario = Scenario();
    scenario.path = path;
    try {
        ScenarioReader(text, scenario).read();
    } catch (const ScenarioFault& fault) {
        error = path + ':' + std::to_string(fault.line) + ':' + std::to_string(fault.column) + ": " + fault.message;
        return false;
    }
    return true;
}
