#include "companion/live/live_boards.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

namespace {

/// How soon a board that comes or goes is noticed, besides the pause between scans.
constexpr std::chrono::milliseconds lookPause{200};
/// Somebody is waiting for a board just plugged in, even if the bridge is set to scan less often.
constexpr std::int32_t longestScanPauseMs = 1000;

template <typename Boards>
bool holdsNumber(const Boards& boards, int index) {
    return std::ranges::any_of(boards, [index](const auto& board) { return board.index == index; });
}

HidManagerSettings settingsOf(const HidConfig& hid) {
    HidManagerSettings settings;
    settings.vendorIdText = hid.vid;
    settings.productIdText = hid.pid;
    settings.scanIntervalMs = std::clamp(hid.scanIntervalMs, 1, longestScanPauseMs);
    // Nothing may be lost here, even where the bridge is set to behave otherwise.
    settings.singlePendingRead = true;
    settings.reopenStoppedReaders = true;
    return settings;
}

} // namespace

LiveBoards::LiveBoards(const HidTransport& transport, const Host& host) : host(host), manager(transport, scanHost()) {
    manager.setReportCallback([this](std::span<const std::uint8_t> bytes, const std::string& board, int index) {
        receive(bytes, board, index);
    });
}

LiveBoards::~LiveBoards() {
    stop();
}

/// The manager's end waits out the pause between two scans, so a stop ends the pause.
Host LiveBoards::scanHost() {
    Host changedHost = host;
    changedHost.sleepFor = [this](std::chrono::milliseconds duration) {
        std::unique_lock lock(mutex);
        changed.wait_for(lock, duration, [this] { return !worker.running(); });
    };
    return changedHost;
}

bool LiveBoards::start(std::shared_ptr<const BridgeConfiguration> configuration, LiveObserver observer,
                       std::string& error) {
    const HidManagerSettings settings = settingsOf(configuration->settings.hid);
    this->observer = std::move(observer);
    announced.clear();
    wake(false);
    setConfiguration(std::move(configuration));
    if (!worker.start(
            host, [this] { run(); }, "Failed to start the worker: ", error)) {
        return false;
    }
    if (!manager.start(settings, nullptr, error)) {
        stop();
        return false;
    }
    return true;
}

void LiveBoards::stop() {
    if (!worker.requestStop()) {
        return;
    }
    wake(false);
    manager.stop();
    wake(true);
    worker.join();
}

/// Takes the mutex even for nothing: whoever has seen the worker running but doesn't wait yet holds it until it waits.
void LiveBoards::wake(bool readersHaveEnded) {
    const std::lock_guard lock(mutex);
    readersEnded = readersHaveEnded;
    changed.notify_all();
}

void LiveBoards::setConfiguration(std::shared_ptr<const BridgeConfiguration> replacement) {
    const std::lock_guard lock(mutex);
    configuration.swap(replacement);
}

std::shared_ptr<const BridgeConfiguration> LiveBoards::currentConfiguration() {
    const std::lock_guard lock(mutex);
    return configuration;
}

std::vector<LiveBoard> LiveBoards::boards() {
    std::vector<LiveBoard> found;
    for (const HidDeviceSummary& board : manager.listDevices()) {
        found.push_back(describe(board.deviceName, board.index));
    }
    return found;
}

LiveBoard LiveBoards::describe(const std::string& name, int index) {
    const auto current = currentConfiguration();
    const DeviceEntry* const entry = current ? findDeviceEntry(current->settings, name, index) : nullptr;
    return {name, index, entry == nullptr ? "" : entry->role};
}

/// On the board's reader thread.
void LiveBoards::receive(std::span<const std::uint8_t> bytes, const std::string& board, int index) {
    LiveReport report{host.now(), board, index, {bytes.begin(), bytes.end()}, {}, ""};
    const std::lock_guard lock(mutex);
    received.push_back(std::move(report));
    changed.notify_all();
}

void LiveBoards::run() {
    while (worker.running()) {
        deliver();
        waitForReport();
    }
    waitForReaders();
    deliverReports();
}

void LiveBoards::waitForReport() {
    std::unique_lock lock(mutex);
    changed.wait_for(lock, lookPause, [this] { return !worker.running() || !received.empty(); });
}

void LiveBoards::waitForReaders() {
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return readersEnded; });
}

// The list is taken before the reports: a board that it lacks was disconnected before, so its last report is among
// them.
void LiveBoards::deliver() {
    const std::vector<LiveBoard> before = announced;
    const std::vector<HidDeviceSummary> present = manager.listDevices();
    deliverReports();
    announceGone(before, present);
    for (const HidDeviceSummary& board : present) {
        announce(board.deviceName, board.index);
    }
}

void LiveBoards::deliverReports() {
    std::vector<LiveReport> reports;
    {
        const std::lock_guard lock(mutex);
        reports.swap(received);
    }
    for (LiveReport& report : reports) {
        // A board that came after the list was taken.
        announce(report.board, report.index);
        decodeReport(report, *currentConfiguration());
        if (observer.reported) {
            observer.reported(report);
        }
    }
}

void LiveBoards::announce(const std::string& name, int index) {
    if (holdsNumber(announced, index)) {
        return;
    }
    std::vector<LiveBoard> sameName;
    std::ranges::copy_if(announced, std::back_inserter(sameName),
                         [&name](const LiveBoard& board) { return board.name == name; });
    if (!sameName.empty()) {
        // The same board came back at once, unless there are two of one name.
        announceGone(sameName, manager.listDevices());
    }
    announced.push_back(describe(name, index));
    if (observer.arrived) {
        observer.arrived(announced.back());
    }
}

void LiveBoards::announceGone(const std::vector<LiveBoard>& candidates, const std::vector<HidDeviceSummary>& present) {
    for (const LiveBoard& board : candidates) {
        if (holdsNumber(present, board.index) || !holdsNumber(announced, board.index)) {
            continue;
        }
        std::erase_if(announced, [&board](const LiveBoard& other) { return other.index == board.index; });
        if (observer.left) {
            observer.left(board);
        }
    }
}
