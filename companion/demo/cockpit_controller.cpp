#include "companion/demo/cockpit_controller.h"

#include "companion/demo/panel_json.h"
#include "companion/page/page_values.h"
#include "simulation/rig/rig_controls.h"
#include "simulation/scenarios/json_text.h"

#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

namespace {

using namespace std::chrono_literals;

/// Too short for a person to see as a delay.
constexpr std::chrono::milliseconds watchPeriod = 15ms;
/// The record that refreshResponseArea leaves.
constexpr std::string_view otherClientsPing = " MF.Ping";

JsonValue jsonTime() {
    return jsonNumber(static_cast<double>(pageTime()));
}

JsonValue emptyJsonArray() {
    JsonValue array;
    array.type = JsonType::Array;
    return array;
}

std::uint8_t modeOf(const std::string& board) {
    return board == "MFD" ? 1 : 0;
}

} // namespace

CockpitController::CockpitController(const CockpitConfiguration& configuration, RigSides sides)
    : configuration(configuration),
      sides(sides),
      rig(cockpitRig(configuration, sides.realBoards ? std::vector<RigBoard>() : configuredPanels(configuration),
                     Pace::real(), sides)),
      observer(rig),
      buttons([this](const HeldButtons::Button& button, std::string_view report) {
          publishSent(button.mode == modeOf("PFD") ? "PFD" : "MFD", button.controlId, report, 0, 0);
      }) {}

CockpitController::~CockpitController() {
    stop();
}

bool CockpitController::start(std::string& error) {
    const std::lock_guard lock(mutex);
    if (!rig.setUp(error)) {
        return false;
    }
    rig.plugAll();
    if (!sides.realSimulator) {
        applyControl(rig, *findSimulatorControl("light")->request(settings.at("light")));
        rig.startSimulator();
    }
    startBridge();
    watching = true;
    watcher = std::thread([this] { watch(); });
    return true;
}

void CockpitController::stop() {
    events.close();
    watching = false;
    if (watcher.joinable()) {
        watcher.join();
        buttons.releaseAll();
        const std::lock_guard lock(mutex);
        rig.bridge().requestStop();
    }
}

std::string CockpitController::panel() const {
    JsonValue boards = emptyJsonArray();
    for (const RigBoard& made : rig.boards()) {
        JsonValue board = jsonObject();
        board.object["name"] = jsonString(made.name);
        board.object["controls"] = panelControls(configuration, made.name);
        boards.array.push_back(std::move(board));
    }
    JsonValue root = jsonObject();
    root.object["configuration"] = jsonString(configuration.title);
    root.object["boards"] = std::move(boards);
    root.object["controls"] = simulatorControlLabels();
    return jsonText(root);
}

void CockpitController::watch() {
    while (watching) {
        {
            const std::lock_guard lock(mutex);
            notify();
        }
        std::this_thread::sleep_for(watchPeriod);
    }
}

void CockpitController::publishSent(const std::string& board, std::uint16_t control, std::string_view report,
                                    int detents, int speed) {
    JsonValue sent = jsonObject();
    sent.object["board"] = jsonString(board);
    sent.object["control"] = jsonNumber(control);
    sent.object["report"] = jsonString(std::string(report));
    sent.object["detents"] = jsonNumber(detents);
    sent.object["speed"] = jsonNumber(speed);
    sent.object["at"] = jsonTime();
    events.publish("sent", jsonText(sent));
}

void CockpitController::notify() {
    std::vector<Observation> items = observer.take();
    // Log lines have no exact time, so those of one look come before what they led to.
    std::stable_partition(items.begin(), items.end(), [](const Observation& item) { return item.stream == "log"; });
    // First, so that a page that gets a report finds it in the state.
    events.setState(state());
    for (const Observation& item : items) {
        publishItem(item);
    }
    if (!items.empty()) {
        // Their own records would grow for as long as the page is open.
        rig.simulator().clearRecords();
        for (const RigBoard& board : rig.boards()) {
            rig.board(board.name).clearOutputs();
        }
    }
}

void CockpitController::publishItem(const Observation& item) {
    JsonValue message = jsonObject();
    message.object["at"] = jsonTime();
    message.object["text"] = jsonString(item.text);
    if (item.stream == "sim" && item.text.ends_with(otherClientsPing)) {
        return;
    }
    if (item.stream == "sim" && item.text == "closed") {
        refreshResponseArea();
    }
    if (item.stream == "log") {
        const std::size_t blank = item.text.find(' ');
        message.object["level"] = jsonString(item.text.substr(0, blank));
        message.object["text"] = jsonString(blank == std::string::npos ? "" : item.text.substr(blank + 1));
        if (const auto event = readHidEventLine(item.text)) {
            message.object["event"] = eventRecord(*event);
        }
    } else if (item.stream == "exit") {
        bridgeExitCode = item.text;
    } else if (item.stream != "sim") {
        message.object["board"] = jsonString(item.stream);
        events.publish("board", jsonText(message));
        return;
    }
    events.publish(item.stream, jsonText(message));
}

std::string CockpitController::state() const {
    JsonValue root = jsonObject();
    root.object["boards"] = boardStates();
    root.object["simulator"] = simulatorState();
    root.object["bridge"] = bridgeState();
    return jsonText(root);
}

JsonValue CockpitController::boardStates() const {
    JsonValue boards = emptyJsonArray();
    for (const RigBoard& made : rig.boards()) {
        const VirtualBoard& board = rig.board(made.name);
        JsonValue entry = boardState(board);
        entry.object["name"] = jsonString(made.name);
        entry.object["plugged"] = jsonBool(rig.plugged(made.name));
        JsonValue held = emptyJsonArray();
        for (const std::uint16_t control : buttons.heldOn(board)) {
            held.array.push_back(jsonNumber(control));
        }
        entry.object["held"] = std::move(held);
        boards.array.push_back(std::move(entry));
    }
    return boards;
}

/// All that can be known of a real simulator's session.
bool CockpitController::boardsKnowASimulator() const {
    return std::ranges::any_of(
        rig.boards(), [this](const RigBoard& made) { return rig.board(made.name).simConnected().value_or(false); });
}

JsonValue CockpitController::simulatorState() const {
    JsonValue simulator = jsonObject();
    simulator.object["real"] = jsonBool(sides.realSimulator);
    simulator.object["running"] = jsonBool(rig.simulatorRunning());
    simulator.object["connected"] =
        jsonBool(sides.realSimulator ? boardsKnowASimulator() : rig.simulator().sessionCount() > 0);
    JsonValue shown = jsonObject();
    for (const auto& [word, argument] : settings) {
        shown.object[word] = jsonString(argument);
    }
    simulator.object["settings"] = std::move(shown);
    return simulator;
}

JsonValue CockpitController::bridgeState() const {
    JsonValue bridge = jsonObject();
    bridge.object["running"] = jsonBool(rig.bridge().running());
    bridge.object["exitCode"] = bridgeExitCode ? jsonString(*bridgeExitCode) : JsonValue();
    return bridge;
}

/// Waits for a bridge that is about to end.
void CockpitController::startBridge() {
    if (rig.bridge().running() && !bridgeEnding) {
        return;
    }
    bridgeEnding = false;
    refreshResponseArea();
    // A bridge that refuses its configuration ends at once, so what its end leaves must not be dropped afterwards.
    bridgeExitCode.reset();
    rig.startBridge();
    notify();
}

/// A command or an answer that equals the one before doesn't reach the module or its clients, and the next session
/// begins as the last one did. In a busy simulator, other clients' commands come in between.
void CockpitController::refreshResponseArea() {
    rig.simulator().pingModule();
}

bool CockpitController::act(const JsonValue& json, const std::string& tab, std::string& error) {
    CockpitAction action;
    if (!readCockpitAction(json, action, error)) {
        return false;
    }
    if (concernsBoard(action.kind)) {
        return actOnBoard(action, tab, error);
    }
    if (action.kind == CockpitActionKind::ControlSimulator) {
        return actOnSimulator(action.command, error);
    }
    const std::lock_guard lock(mutex);
    actOnBridge(action.kind);
    notify();
    return true;
}

/// Without the mutex, so that a press never waits: another action may be slow.
bool CockpitController::actOnBoard(const CockpitAction& action, const std::string& tab, std::string& error) {
    if (std::ranges::find(rig.boards(), action.board, &RigBoard::name) == rig.boards().end()) {
        error = "there is no board " + action.board;
        return false;
    }
    VirtualBoard& board = rig.board(action.board);
    const HeldButtons::Button button{&board, action.control, modeOf(action.board)};
    switch (action.kind) {
    case CockpitActionKind::Press:
        return buttons.press(button, tab, error);
    case CockpitActionKind::Release:
        buttons.release(button);
        break;
    case CockpitActionKind::Turn:
        publishSent(action.board, action.control, "turn", action.detents, action.speed);
        board.turn(action.control, action.detents, action.speed, button.mode);
        break;
    default:
        plug(action);
        break;
    }
    return true;
}

void CockpitController::plug(const CockpitAction& action) {
    {
        const std::lock_guard lock(mutex);
        if (action.kind == CockpitActionKind::Unplug) {
            rig.unplug(action.board);
        } else if (!rig.plugged(action.board)) {
            rig.plug(action.board);
        }
        notify();
    }
    // A board without power can't report a release.
    if (action.kind == CockpitActionKind::Unplug) {
        buttons.releaseAllOn(rig.board(action.board));
    }
}

bool CockpitController::actOnSimulator(const std::string& command, std::string& error) {
    if (sides.realSimulator) {
        error = "the simulator is this machine's own";
        return false;
    }
    const std::optional<SimulatorRequest> request = readSimulatorRequest(command, error);
    if (!request) {
        return false;
    }
    const std::lock_guard lock(mutex);
    control(*request);
    notify();
    return true;
}

void CockpitController::control(const SimulatorRequest& request) {
    const std::string_view word = request.control->word;
    bridgeEnding = bridgeEnding || word == "quit" || word == "die";
    if (word == "drop") {
        refreshResponseArea();
    }
    applyControl(rig, request);
    if (word == "start") {
        // As the simulator itself does it.
        startBridge();
    }
    if (const auto setting = settings.find(word); setting != settings.end()) {
        setting->second = request.argument;
    }
}

void CockpitController::actOnBridge(CockpitActionKind kind) {
    if (kind == CockpitActionKind::StartBridge) {
        startBridge();
    } else {
        bridgeEnding = true;
        rig.bridge().requestStop();
    }
}
