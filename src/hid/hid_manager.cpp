#include "hid/hid_manager.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

HidManager::HidManager(HidTransport transport, Host host) : transport(std::move(transport)), host(std::move(host)) {}

HidManager::~HidManager() {
    stop();
    // A pass that another thread ran after a stop has connected boards again.
    disconnectAll();
}

bool HidManager::start(const HidManagerSettings& settings, HidEventCallback callback, std::string& error) {
    if (running) {
        return true;
    }
    if (!parseUsbIds(settings.vendorIdText, settings.productIdText)) {
        error = invalidUsbIds;
        return false;
    }
    vendorIdText = settings.vendorIdText;
    productIdText = settings.productIdText;
    readIntervalMs = settings.readIntervalMs;
    scanIntervalMs = settings.scanIntervalMs;
    singlePendingRead = settings.singlePendingRead;
    reopenStoppedReaders = settings.reopenStoppedReaders;
    this->callback = std::move(callback);
    running = true;
    // The scan thread begins with a pass too. This one is for the caller: boards that are present have sessions on
    // return.
    scanDevices();
    scanThread = host.startThread([this] { scanLoop(); });
    return true;
}

void HidManager::stop() {
    if (!running.exchange(false)) {
        return;
    }
    if (scanThread.joinable()) {
        scanThread.join();
    }
    disconnectAll();
}

void HidManager::setTraceEnabled(bool traceEnabled) {
    this->traceEnabled = traceEnabled;
}

void HidManager::setReportCallback(HidReportCallback callback) {
    reportCallback = std::move(callback);
}

void HidManager::scanLoop() {
    while (running) {
        scanDevices();
        host.sleepFor(std::chrono::milliseconds(scanIntervalMs));
    }
}

void HidManager::scanDevices() {
    const std::optional<UsbIds> ids = parseUsbIds(vendorIdText, productIdText);
    if (!ids) {
        return;
    }
    // Outside the mutex, because every HID device on the machine is opened: one that hangs stalls this pass, not the
    // connected boards. Of two simultaneous passes, the one with the older list may end a session that the other has
    // just made; the next pass makes it again.
    const auto paths = findMatchingPaths(*ids);
    const std::lock_guard lock(mutex);
    disconnectEnded(paths);
    for (const auto& path : paths) {
        if (!sessions.contains(path)) {
            connectBoard(path);
        }
    }
}

std::vector<HidDeviceSummary> HidManager::listDevices() {
    const std::lock_guard lock(mutex);
    std::vector<HidDeviceSummary> devices;
    devices.reserve(sessions.size());
    for (const auto& [path, session] : sessions) {
        devices.push_back({session->deviceName, session->index});
    }
    return devices;
}

bool HidManager::hasDevices() {
    const std::lock_guard lock(mutex);
    return !sessions.empty();
}

std::vector<std::string> HidManager::findMatchingPaths(const UsbIds& ids) {
    auto paths = transport.enumerate();
    std::erase_if(paths, [&](const std::string& path) {
        HidAttributes found;
        return !probe(path, found) || found.vendorId != ids.vendorId || found.productId != ids.productId;
    });
    return paths;
}

bool HidManager::probe(const std::string& path, HidAttributes& attributes) {
    const auto handle = openForReading(transport, path, HidMode::Synchronous);
    return handle.isOpen() && transport.attributes(handle, attributes);
}

void HidManager::disconnectEnded(const std::vector<std::string>& paths) {
    for (auto entry = sessions.begin(); entry != sessions.end();) {
        entry = hasEnded(*entry->second, paths) ? disconnectBoard(entry) : std::next(entry);
    }
}

bool HidManager::hasEnded(const HidDeviceSession& session, const std::vector<std::string>& paths) const {
    // A board that was replugged under its old path between two passes was never missing, but its old handles are dead.
    const bool reopen = reopenStoppedReaders && session.readerEnded;
    return reopen || std::find(paths.begin(), paths.end(), session.path) == paths.end();
}

void HidManager::disconnectAll() {
    const std::lock_guard lock(mutex);
    for (auto entry = sessions.begin(); entry != sessions.end();) {
        entry = disconnectBoard(entry);
    }
}
