#include "companion/setup/setup_controller.h"

#include "app/app_paths.h"
#include "app/program_names.h"
#include "companion/devices/board_list.h"
#include "companion/json/json_text.h"
#include "companion/live/live_text.h"
#include "companion/page/page_values.h"
#include "mapping/event_decision.h"
#include "platform/file_system.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

using EventJson = nlohmann::ordered_json;

constexpr std::chrono::milliseconds lookPeriod{500};
/// Looking at a virtual bus costs nothing.
constexpr std::int32_t virtualScanMs = 100;
/// Lines of an earlier run that are still shown.
constexpr std::size_t oldLines = 50;

std::string serviceLogPath(const Host& host) {
    const std::string folder = logDirectory(false, commonAppDataDirectory(host), exeDirectory(host));
    return FileSystem::join(folder, std::string(programName) + ".log");
}

bool isTurn(HidProtocol::HidEventAction action) {
    return action == HidProtocol::HidEventAction::EncCw || action == HidProtocol::HidEventAction::EncCcw;
}

EventJson eventOf(const LiveReport& report, const DecodedEvent& decoded) {
    return {{"at", pageTime()},
            {"board", report.board},
            {"control", decoded.event.controlId},
            {"name", decoded.controlName},
            {"action", std::string(actionKey(decoded.action))},
            {"text", actionText(decoded)},
            {"knob", isTurn(decoded.action)},
            {"role", decoded.role},
            {"sends", sendsAnything(decoded.answer)},
            {"answer", answerText(decoded)}};
}

} // namespace

SetupController::SetupController(const Platform& platform, const SetupOptions& options)
    : platform(platform),
      options(options),
      checks(systemMachine(platform), options.configPath),
      bridge(platform.host, systemProcesses(), [this](const std::string& line) { publishLine("", line); }),
      bridgeLog(serviceLogPath(platform.host)),
      realLive(platform.hid, platform.host),
      virtualLive(virtualBoards.transport(), platform.host) {
    state.configuration = std::make_shared<EditedConfiguration>(options.configPath);
    state.progress.isFirst = configuration().problem().empty() && !configuration().files().exist();
    state.bridgeProgram = bridge.programPath();
    state.howBridgeEnds = bridge.howOtherEnds();
}

SetupController::~SetupController() {
    stop();
}

bool SetupController::start(std::string& error) {
    virtualSimulator.setRecordCallback([this](const SimulatorRecord& record) { onReceived(record); });
    const std::lock_guard actionLock(actionMutex);
    if (!virtualSimulator.start(0, error) || !startLink(error) || !startBoards(virtualLive, true, error)) {
        return false;
    }
    for (int i = 0; i < options.virtualBoards; ++i) {
        virtualBoards.add();
    }
    followConfiguration();
    const std::vector<LogLine> lines = bridgeLog.newLines();
    for (std::size_t i = lines.size() - std::min(lines.size(), oldLines); i < lines.size(); ++i) {
        publishLine(lines[i].level, lines[i].message);
    }
    return watcher.start(
        platform.host, [this] { watch(); }, "The page can't be kept up to date: ", error);
}

void SetupController::stop() {
    events.close();
    watcher.requestStop();
    {
        const std::lock_guard lock(mutex);
        ending.notify_all();
    }
    watcher.join();
    realLive.stop();
    virtualLive.stop();
    link.reset();
    virtualSimulator.setRecordCallback(nullptr);
    virtualSimulator.stop();
}

/// Virtual boards have ids of their own, so that they are there whatever the configuration says.
std::shared_ptr<const BridgeConfiguration> SetupController::configurationFor(bool areVirtual) const {
    std::shared_ptr<const BridgeConfiguration> read = configuration().forBridge();
    if (!areVirtual) {
        return read;
    }
    auto changed = std::make_shared<BridgeConfiguration>(*read);
    changed->settings.hid.vid = VirtualBoards::vendorId;
    changed->settings.hid.pid = VirtualBoards::productId;
    changed->settings.hid.scanIntervalMs = virtualScanMs;
    return changed;
}

bool SetupController::startBoards(LiveBoards& boards, bool areVirtual, std::string& error) {
    LiveObserver observer;
    observer.arrived = [this, areVirtual](const LiveBoard& board) { onArrival(board, areVirtual); };
    observer.left = [this, areVirtual](const LiveBoard& board) { onDeparture(board, areVirtual); };
    observer.reported = [this, areVirtual](const LiveReport& report) { onReport(report, areVirtual); };
    return boards.start(configurationFor(areVirtual), std::move(observer), error);
}

/// Without usable ids there are no real boards, which the page shows.
void SetupController::restartRealBoards() {
    realLive.stop();
    {
        const std::lock_guard lock(mutex);
        std::erase_if(state.boards, [](const ShownBoard& board) { return !board.isVirtual; });
    }
    std::string ignored;
    startBoards(realLive, false, ignored);
}

void SetupController::followConfiguration() {
    const std::shared_ptr<const BridgeConfiguration> read = configuration().forBridge();
    if (read == followed) {
        return;
    }
    const bool areIdsNew = followed == nullptr || followed->settings.hid.vid != read->settings.hid.vid ||
                           followed->settings.hid.pid != read->settings.hid.pid;
    followed = read;
    virtualLive.setConfiguration(configurationFor(true));
    if (areIdsNew) {
        restartRealBoards();
    } else {
        realLive.setConfiguration(read);
    }
    const std::lock_guard lock(mutex);
    showRoles(read->settings);
}

void SetupController::onArrival(const LiveBoard& board, bool isVirtual) {
    const std::lock_guard lock(mutex);
    state.boards.push_back({board.name, board.index, isVirtual, "", ""});
    // The arrival's own role may come from a configuration that was replaced meanwhile.
    showRoles(configuration().forBridge()->settings);
    publishState();
}

void SetupController::onDeparture(const LiveBoard& board, bool isVirtual) {
    const std::lock_guard lock(mutex);
    std::erase_if(state.boards,
                  [&](const ShownBoard& shown) { return shown.index == board.index && shown.isVirtual == isVirtual; });
    publishState();
}

void SetupController::onReport(const LiveReport& report, bool isVirtual) {
    if (!report.event) {
        return;
    }
    const std::lock_guard lock(mutex);
    const DecodedEvent& decoded = *report.event;
    for (ShownBoard& board : state.boards) {
        if (board.index == report.index && board.isVirtual == isVirtual) {
            board.role = decoded.role;
        }
    }
    bool& isKnob = state.used[decoded.event.controlId];
    isKnob = isKnob || isTurn(decoded.action);
    state.progress.pressed = true;
    // First, so that the page finds the control in the state.
    publishState();
    events.publish("event", jsonLine(eventOf(report, decoded)));
}

void SetupController::onReceived(const SimulatorRecord& record) {
    if (record.kind == SimulatorRecordKind::Executed) {
        events.publish("received", jsonLine({{"at", pageTime()}, {"text", record.text}}));
    }
}

void SetupController::watch() {
    while (watcher.running()) {
        {
            const std::lock_guard actionLock(actionMutex);
            look();
        }
        std::unique_lock lock(mutex);
        ending.wait_for(lock, lookPeriod, [this] { return !watcher.running(); });
    }
}

void SetupController::look() {
    SetupSurroundings seen;
    seen.places = registrationPlaces(platform.host);
    seen.bridgeExists = bridge.programExists();
    seen.bridge = bridge.running();
    seen.bridgeIsOurs = bridge.wasStartedHere();
    seen.simulator = link->state();
    if (configuration().problem().empty()) {
        configuration().files().areUnchanged(seen.changedOnDisk);
    }
    followLog();
    // They would grow for as long as the page is open.
    virtualSimulator.clearRecords();
    const std::lock_guard lock(mutex);
    state.surroundings = std::move(seen);
    publishState();
}

void SetupController::reach(bool SetupProgress::*step) {
    const std::lock_guard lock(mutex);
    state.progress.*step = true;
}

void SetupController::followLog() {
    for (const LogLine& line : bridgeLog.newLines()) {
        publishLine(line.level, line.message);
    }
}

void SetupController::publishLine(const std::string& level, const std::string& text) {
    events.publish("log", jsonLine({{"at", pageTime()}, {"level", level}, {"text", text}}));
}

void SetupController::publishState() {
    for (ShownBoard& board : state.boards) {
        board.light = board.isVirtual ? virtualBoards.lightOf(board.name) : std::nullopt;
    }
    if (state != shown) {
        shown = state;
        events.setState(stateJson(state));
    }
}

bool SetupController::hasUnsavedChanges() {
    const std::lock_guard actionLock(actionMutex);
    return configuration().hasUnsavedChanges();
}

bool SetupController::hasBridge() {
    const std::lock_guard actionLock(actionMutex);
    return bridge.wasStartedHere();
}

std::string SetupController::difference() {
    const std::lock_guard actionLock(actionMutex);
    return differenceJson(configuration());
}

std::string SetupController::devices() {
    return boardsJson(listBoards(platform.hid, nullptr));
}
