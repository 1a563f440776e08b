#include "simulation/rig/bridge_rig.h"

#include "app/app_paths.h"
#include "app/program_names.h"
#include "platform/file_system.h"
#include "simulation/rig/poll_until.h"
#include "simulation/rig/simulator_library.h"

#include <fstream>
#include <random>
#include <system_error>
#include <utility>

namespace {

/// How long the bridge may take to find a board; generous for a busy machine.
constexpr std::chrono::seconds readLimit{30};

/// Whether the bridge reads a board of this model, as far as the rig knows: a configuration may select others.
bool hasDefaultIds(const VirtualBoardModel& model) {
    const VirtualBoardModel usual;
    return model.vendorId == usual.vendorId && model.productId == usual.productId;
}

} // namespace

BridgeRig::BridgeRig(RigSettings settings)
    : settings(std::move(settings)), virtualSimulator({.moduleInstalled = this->settings.moduleInstalled}) {
    hidBus.setRecording(false);
    for (const RigBoard& made : this->settings.boards) {
        slots[made.name] = {&made, std::make_shared<VirtualBoard>(made.model)};
    }
}

BridgeRig::~BridgeRig() {
    bridgeRun.reset();
    virtualSimulator.stop();
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

bool BridgeRig::setUp(std::string& error) {
    if (!makeFolder(error) || !startServer(error)) {
        return false;
    }
    writeFiles();
    // The folder is both the machine's data folder and the program's.
    const std::string path = FileSystem::toBytes(folder);
    log.emplace(FileSystem::join(logDirectory(settings.consoleMode, path, path), std::string(programName) + ".log"));
    makeBridgeRun();
    return true;
}

bool BridgeRig::makeFolder(std::string& error) {
    std::random_device random;
    std::error_code code;
    folder = std::filesystem::temp_directory_path(code) / ("bridge-rig-" + std::to_string(random()));
    if (code || !std::filesystem::create_directory(folder, code)) {
        error = "can't make a folder for the bridge's files: " + code.message();
        return false;
    }
    return true;
}

void BridgeRig::writeFiles() const {
    for (const auto& [name, text] : settings.files) {
        std::ofstream file(folder / FileSystem::fromBytes(name), std::ios::binary | std::ios::trunc);
        file.write(text.data(), static_cast<std::streamsize>(text.size()));
    }
}

bool BridgeRig::startServer(std::string& error) {
    virtualSimulator.setBattery(true);
    if (!virtualSimulator.start(0, error)) {
        return false;
    }
    updateListening();
    return true;
}

void BridgeRig::makeBridgeRun() {
    bridgeRun.reset();
    notifications.emplace(settings.hotPlugNotifications);
    bridgeRun = std::make_unique<BridgeRun>(platform(), [this](int exitCode) {
        if (exitCallback) {
            exitCallback(exitCode);
        }
    });
}

Platform BridgeRig::platform() const {
    Platform records{hidBus.transport(), simulatorLibrary(virtualSimulator, settings.pace.openLimits),
                     notifications->source(), host()};
    const Platform system = systemPlatform();
    if (settings.sides.realBoards) {
        records.hid = system.hid;
        records.deviceNotifications = system.deviceNotifications;
    }
    if (settings.sides.realSimulator) {
        records.simConnect = system.simConnect;
        records.host.findProcess = system.host.findProcess;
    }
    return records;
}

Host BridgeRig::host() const {
    Host host = systemPlatform().host;
    host.findProcess = [listed = processListed](const std::function<bool(std::string_view)>& visit) {
        return visit("explorer.exe") || (listed->load() && visit("FlightSimulator.exe"));
    };
    host.executablePath = [path = FileSystem::toBytes(folder / programName)] { return path; };
    // This machine's own notice isn't part of a story.
    host.systemNotice = nullptr;
    host.commonDataFolder = [path = FileSystem::toBytes(folder)] { return path; };
    host.sleepFor = [pace = settings.pace, sleep = host.sleepFor](std::chrono::milliseconds wait) {
        sleep(pace.apply(wait));
    };
    return host;
}

void BridgeRig::startBridge() {
    if (bridgeRun->started()) {
        makeBridgeRun();
    }
    bridgeRun->start(FileSystem::toBytes(folder / "config.json"), settings.consoleMode);
    for (const auto& [name, slot] : slots) {
        waitUntilRead(slot);
    }
}

void BridgeRig::endBridge() {
    makeBridgeRun();
}

std::vector<LogLine> BridgeRig::newLogLines() {
    return log ? log->newLines() : std::vector<LogLine>();
}

void BridgeRig::plug(const std::string& name) {
    const Slot& slot = slots.at(name);
    hidBus.plug(slot.board, slot.made->port);
    notify();
    waitUntilRead(slot);
}

void BridgeRig::plugAll() {
    for (const RigBoard& made : settings.boards) {
        if (!plugged(made.name)) {
            plug(made.name);
        }
    }
}

void BridgeRig::unplug(const std::string& name) {
    hidBus.unplug(slots.at(name).board);
    notify();
}

void BridgeRig::replug(const std::string& name) {
    hidBus.replug(slots.at(name).board);
    notify();
}

bool BridgeRig::plugged(const std::string& name) const {
    return !hidBus.pathOf(slots.at(name).board).empty();
}

VirtualBoard& BridgeRig::board(const std::string& name) const {
    return *slots.at(name).board;
}

bool BridgeRig::awaited(const std::string& name) const {
    return hidBus.pendingReadCount(slots.at(name).board) > 0;
}

void BridgeRig::setFaults(const std::string& name, const HidLinkFaults& faults) {
    Slot& slot = slots.at(name);
    slot.faulty = true;
    hidBus.setFaults(slot.board, faults);
}

std::vector<std::string> BridgeRig::usableBoards() const {
    std::vector<std::string> names;
    for (const auto& [name, slot] : slots) {
        if (plugged(name) && !slot.faulty && hasDefaultIds(slot.made->model)) {
            names.push_back(name);
        }
    }
    return names;
}

// Accepts sessions first: a bridge that finds the process opens one at once.
void BridgeRig::startSimulator() {
    virtualSimulator.refuseOpens(refusing);
    processListed->store(true);
}

void BridgeRig::hideProcess() {
    processListed->store(false);
}

// The process leaves the list first: a bridge that looks for it after its session's end must not find it.
void BridgeRig::quitSimulator() {
    hideProcess();
    virtualSimulator.quit();
}

void BridgeRig::crashSimulator() {
    hideProcess();
    virtualSimulator.die();
}

void BridgeRig::refuseSessions(bool refuse) {
    refusing = refuse;
    updateListening();
}

bool BridgeRig::simulatorRunning() const {
    return processListed->load();
}

void BridgeRig::updateListening() {
    virtualSimulator.refuseOpens(refusing || !simulatorRunning());
}

void BridgeRig::notify() {
    notifications->notify();
    if (settings.waitsForBridge && settings.hotPlugNotifications && bridgeRun->running()) {
        notifications->waitUntilHandled(readLimit);
    }
}

void BridgeRig::waitUntilRead(const Slot& slot) const {
    const auto isReadOrOver = [&] { return hidBus.pendingReadCount(slot.board) > 0 || !bridgeRun->running(); };
    if (settings.waitsForBridge && !slot.faulty && hasDefaultIds(slot.made->model) && plugged(slot.made->name)) {
        pollUntil(isReadOrOver, readLimit);
    }
}
