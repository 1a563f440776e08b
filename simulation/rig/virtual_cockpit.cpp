#include "simulation/rig/virtual_cockpit.h"

#include "platform/file_system.h"
#include "platform/network_simconnect.h"
#include "simulation/scenarios/scenario_configuration.h"
#include "simulation/scenarios/stream_texts.h"
#include "wire/simconnect_open.h"

#include <algorithm>
#include <random>
#include <system_error>
#include <thread>
#include <utility>

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds shortestLongWait = 1000ms;
constexpr std::chrono::milliseconds dispatchPoll = 15ms;
/// How long a plugged board may take to be read; generous for a busy machine.
constexpr std::chrono::milliseconds readLimit = 30000ms;

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(1ms);
    }
    return true;
}

/// Of those that the default configuration asks for.
bool isOurs(const VirtualBoardModel& model) {
    const VirtualBoardModel ours;
    return model.vendorId == ours.vendorId && model.productId == ours.productId;
}

} // namespace

void VirtualCockpit::Inbox::add(const std::string& stream, const std::string& text) {
    const std::lock_guard lock(mutex);
    items.push_back({std::chrono::steady_clock::now(), stream, text});
}

VirtualCockpit::VirtualCockpit(const Scenario& played, CockpitPace wantedPace, CockpitSides wantedSides)
    : scenario(played), pace(wantedPace), sides(wantedSides) {
    bus.setRecording(false);
    makeSeats();
}

VirtualCockpit::~VirtualCockpit() {
    bridgeRun.reset();
    if (virtualSimulator) {
        virtualSimulator->stop();
    }
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

bool VirtualCockpit::setUp(std::string& error) {
    if (!makeFolder(error) || !startVirtualSimulator(error)) {
        return false;
    }
    makeBridgeRun();
    return true;
}

void VirtualCockpit::makeBridgeRun() {
    bridgeRun.reset();
    news = std::make_shared<HotPlugNotifications>();
    bridgeRun =
        std::make_unique<BridgeRun>(platform(), [to = inbox](int code) { to->add("exit", std::to_string(code)); });
}

void VirtualCockpit::makeSeats() {
    for (const ScenarioBoard& made : scenario.boards) {
        Seat seat{&made, std::make_shared<VirtualBoard>(made.model)};
        seat.board->setOutputCallback(
            [to = inbox, name = made.name](const BoardOutput& output) { to->add(name, outputText(output)); });
        seats[made.name] = std::move(seat);
    }
}

bool VirtualCockpit::makeFolder(std::string& error) {
    std::random_device random;
    std::error_code code;
    folder = std::filesystem::temp_directory_path(code) / ("virtual-cockpit-" + std::to_string(random()));
    if (code || !std::filesystem::create_directory(folder, code)) {
        error = "can't make a folder for the bridge's files: " + code.message();
        return false;
    }
    return true;
}

bool VirtualCockpit::startVirtualSimulator(std::string& error) {
    VirtualSimulatorOptions options;
    options.moduleInstalled = scenario.moduleInstalled;
    virtualSimulator = std::make_unique<VirtualSimulator>(options);
    virtualSimulator->setRecordCallback([to = inbox, dummies = scenario.watch.dummies](const SimulatorRecord& record) {
        const std::optional<std::string> text = recordText(record);
        const bool fromBridge = record.session != 0;
        if (text && fromBridge && (dummies || record.kind != SimulatorRecordKind::Dummy)) {
            to->add("sim", *text);
        }
    });
    // An aircraft with its power on, as most scenarios have it.
    virtualSimulator->setBattery(true);
    if (!virtualSimulator->start(0, error)) {
        return false;
    }
    updateListening();
    return true;
}

Platform VirtualCockpit::platform() {
    Platform records{bus.transport(), simConnectLibrary(), deviceNotifications(), host()};
    const Platform system = systemPlatform();
    if (sides.realBoards) {
        records.hid = system.hid;
        records.deviceNotifications = system.deviceNotifications;
    }
    if (sides.realSimulator) {
        records.simConnect = system.simConnect;
        records.host.findProcess = system.host.findProcess;
    }
    return records;
}

Host VirtualCockpit::host() const {
    Host host = systemPlatform().host;
    host.findProcess = [listed = processListed](const std::function<bool(std::string_view)>& visit) {
        return visit("explorer.exe") || (listed->load() && visit("FlightSimulator.exe"));
    };
    host.executablePath = [path = FileSystem::toBytes(folder / "VantrelBridgeHID")] { return path; };
    host.commonDataFolder = [path = FileSystem::toBytes(folder)] { return path; };
    host.sleepFor = [limits = pace, sleep = host.sleepFor](std::chrono::milliseconds duration) {
        if (duration >= shortestLongWait) {
            sleep(std::min(duration, limits.longestWait));
        } else {
            sleep(duration == dispatchPoll ? limits.dispatchPoll : duration);
        }
    };
    return host;
}

SimConnectLibrary VirtualCockpit::simConnectLibrary() const {
    SimConnectLibrary library = networkSimConnectLibrary();
    library.open = [port = virtualSimulator->port(), limits = pace.openLimits](
                       SimConnectHandle* handle, const char* name, void*, std::uint32_t, void*, std::uint32_t) {
        SimConnectEndpoint endpoint;
        endpoint.port = port;
        return simConnectOpenAt(handle, name, endpoint, limits);
    };
    return library;
}

DeviceNotificationSource VirtualCockpit::deviceNotifications() const {
    DeviceNotificationSource source;
    source.setUp = [available = scenario.hotPlugNotifications](std::string& error) {
        if (!available) {
            error = "no news of boards here";
        }
        return available;
    };
    source.run = [from = news](const std::function<void()>& onChange) {
        std::unique_lock lock(from->mutex);
        while (!from->ended) {
            if (const std::uint64_t told = from->told; told != from->handled) {
                lock.unlock();
                onChange();
                lock.lock();
                from->handled = told;
                from->changed.notify_all();
            } else {
                from->changed.wait(lock);
            }
        }
    };
    source.tearDown = [] {};
    source.requestEnd = [to = news] {
        const std::lock_guard lock(to->mutex);
        to->ended = true;
        to->changed.notify_all();
    };
    return source;
}

void VirtualCockpit::startBridge() {
    if (bridgeRun->started()) {
        makeBridgeRun();
    }
    const std::string configPath = writeConfiguration(scenario, FileSystem::toBytes(folder));
    const std::filesystem::path logFolder = scenario.consoleMode ? folder : folder / "VantrelBridge" / "logs";
    if (!log) {
        log = std::make_unique<LogFollower>(FileSystem::toBytes(logFolder / "VantrelBridgeHID.log"));
    }
    bridgeRun->start(configPath, scenario.consoleMode);
    for (const auto& [name, seat] : seats) {
        waitUntilRead(seat);
    }
}

void VirtualCockpit::plug(const std::string& name) {
    const Seat& seat = seats.at(name);
    bus.plug(seat.board, seat.made->port);
    notify();
    waitUntilRead(seat);
}

void VirtualCockpit::unplug(const std::string& name) {
    bus.unplug(seats.at(name).board);
    notify();
}

void VirtualCockpit::replug(const std::string& name) {
    bus.replug(seats.at(name).board);
    notify();
}

bool VirtualCockpit::plugged(const std::string& name) const {
    return !bus.pathOf(seats.at(name).board).empty();
}

VirtualBoard& VirtualCockpit::board(const std::string& name) const {
    return *seats.at(name).board;
}

bool VirtualCockpit::awaited(const std::string& name) const {
    return bus.pendingReadCount(seats.at(name).board) > 0;
}

void VirtualCockpit::setFaults(const std::string& name, const HidLinkFaults& faults) {
    Seat& seat = seats.at(name);
    seat.faulty = true;
    bus.setFaults(seat.board, faults);
}

std::vector<std::string> VirtualCockpit::usableBoards() const {
    std::vector<std::string> names;
    for (const auto& [name, seat] : seats) {
        if (plugged(name) && !seat.faulty && isOurs(seat.made->model)) {
            names.push_back(name);
        }
    }
    return names;
}

void VirtualCockpit::startSimulator() {
    processListed->store(true);
    updateListening();
}

void VirtualCockpit::hideProcess() {
    processListed->store(false);
}

// The process goes first: a bridge that looks for it once its session has ended must not find it any more.
void VirtualCockpit::quitSimulator() {
    hideProcess();
    virtualSimulator->quit();
}

void VirtualCockpit::crashSimulator() {
    hideProcess();
    virtualSimulator->die();
}

void VirtualCockpit::refuseSessions(bool refuse) {
    refusing = refuse;
    updateListening();
}

bool VirtualCockpit::simulatorRunning() const {
    return processListed->load();
}

void VirtualCockpit::updateListening() {
    virtualSimulator->refuseOpens(refusing || !simulatorRunning());
}

std::vector<CockpitItem> VirtualCockpit::takeItems() {
    std::vector<CockpitItem> items;
    {
        const std::lock_guard lock(inbox->mutex);
        items.swap(inbox->items);
    }
    if (log) {
        for (const LogLine& line : log->newLines()) {
            std::string text = line.level + ' ' + line.message;
            // A scenario's line can't end with blanks.
            text.erase(text.find_last_not_of(' ') + 1);
            items.push_back({std::chrono::steady_clock::now(), "log", std::move(text)});
        }
    }
    return items;
}

/// Waits until the bridge has looked: a pulled board that it still writes to would be warned of.
void VirtualCockpit::notify() {
    std::unique_lock lock(news->mutex);
    ++news->told;
    news->changed.notify_all();
    if (scenario.hotPlugNotifications && bridgeRun->running()) {
        news->changed.wait_for(lock, readLimit, [this] { return news->handled == news->told || news->ended; });
    }
}

/// An input report that a board sends before somebody reads is lost.
void VirtualCockpit::waitUntilRead(const Seat& seat) const {
    if (bridgeRun->running() && !bus.pathOf(seat.board).empty() && !seat.faulty && isOurs(seat.made->model)) {
        waitUntil([&] { return bus.pendingReadCount(seat.board) > 0 || !bridgeRun->running(); }, readLimit);
    }
}
