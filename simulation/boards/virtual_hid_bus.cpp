#include "simulation/boards/virtual_hid_bus.h"

#include "simulation/boards/virtual_hid_bus_state.h"

#include <algorithm>
#include <utility>

namespace {

std::string numbered(std::string_view port, std::uint64_t number) {
    const auto digits = std::to_string(number);
    constexpr std::size_t width = 4; // so that paths of one port sort in the order of their plugging
    return std::string(port) + "#" + std::string(width - std::min(width, digits.size()), '0') + digits;
}

std::vector<std::string> texts(const std::vector<HidCallRecord>& records) {
    std::vector<std::string> result;
    result.reserve(records.size());
    for (const auto& record : records) {
        result.push_back(record.text);
    }
    return result;
}

} // namespace

VirtualHidBus::VirtualHidBus() : state(std::make_shared<State>()) {}

VirtualHidBus::~VirtualHidBus() {
    const std::lock_guard lock(state->mutex);
    while (!state->connections.empty()) {
        state->pull(state->connections.back());
    }
}

std::string VirtualHidBus::plug(const std::shared_ptr<VirtualBoard>& board, std::string_view port) {
    const std::lock_guard lock(state->mutex);
    if (const auto present = state->connectionOf(board)) {
        state->pull(present);
    }
    auto path = numbered(port, ++state->lastPlug);
    state->connect(board, path);
    return path;
}

void VirtualHidBus::replug(const std::shared_ptr<VirtualBoard>& board) {
    const std::lock_guard lock(state->mutex);
    if (const auto present = state->connectionOf(board)) {
        state->pull(present);
        state->connect(board, present->path);
    }
}

void VirtualHidBus::unplug(const std::shared_ptr<VirtualBoard>& board) {
    const std::lock_guard lock(state->mutex);
    if (const auto connection = state->connectionOf(board)) {
        state->pull(connection);
    }
}

void VirtualHidBus::setFaults(const std::shared_ptr<VirtualBoard>& board, const HidLinkFaults& faults) {
    const std::lock_guard lock(state->mutex);
    state->faults[board] = faults;
    if (const auto connection = state->connectionOf(board)) {
        state->wakeReaders(*connection);
    }
}

std::string VirtualHidBus::pathOf(const std::shared_ptr<VirtualBoard>& board) const {
    const std::lock_guard lock(state->mutex);
    const auto connection = state->connectionOf(board);
    return connection ? connection->path : std::string();
}

std::size_t VirtualHidBus::openHandleCount() const {
    const std::lock_guard lock(state->mutex);
    return state->handles.size();
}

std::size_t VirtualHidBus::pendingReadCount(const std::shared_ptr<VirtualBoard>& board) const {
    const std::lock_guard lock(state->mutex);
    std::size_t count = 0;
    for (const auto& [number, handle] : state->handles) {
        count += handle->connection->board == board ? handle->pendingReads : 0;
    }
    return count;
}

std::uint64_t VirtualHidBus::misuseCount() const {
    const std::lock_guard lock(state->mutex);
    return state->misuses;
}

std::vector<HidCallRecord> VirtualHidBus::calls() const {
    const std::lock_guard lock(state->mutex);
    return state->callRecords;
}

std::vector<std::string> VirtualHidBus::callTexts() const {
    return texts(calls());
}

std::vector<HidCallRecord> VirtualHidBus::reads() const {
    const std::lock_guard lock(state->mutex);
    return state->readRecords;
}

void VirtualHidBus::clearCalls() {
    const std::lock_guard lock(state->mutex);
    state->callRecords.clear();
    state->readRecords.clear();
}

void VirtualHidBus::setRecording(bool enabled) {
    const std::lock_guard lock(state->mutex);
    state->recording = enabled;
}

HidTransport VirtualHidBus::transport() const {
    HidTransport result;
    result.enumerate = [bus = state] { return bus->enumerate(); };
    result.open = [bus = state](const std::string& path, HidAccess access, HidMode mode) {
        return bus->open(path, {access, mode});
    };
    result.close = [bus = state](HidHandle handle) { bus->close(handle); };
    result.attributes = [bus = state](HidHandle handle, HidAttributes& found) {
        return bus->attributes(handle, found);
    };
    result.serialNumber = [bus = state](HidHandle handle, std::string& serial) {
        return bus->serialNumber(handle, serial);
    };
    result.getFeature = [bus = state](HidHandle handle, std::span<std::uint8_t> report) {
        return bus->getFeature(handle, report);
    };
    result.makeReader = [bus = state](HidHandle number) -> HidReader {
        return [bus, handle = bus->readerHandle(number),
                buffer = std::make_shared<std::vector<std::uint8_t>>()](std::chrono::milliseconds limit) {
            return handle ? bus->read(*handle, limit, *buffer) : HidReadResult{};
        };
    };
    result.cancelReads = [bus = state](HidHandle handle) { bus->cancelReads(handle); };
    result.write = [bus = state](HidHandle handle, std::span<const std::uint8_t> report) {
        return bus->write(handle, report);
    };
    result.setOutputReport = [bus = state](HidHandle handle, std::span<const std::uint8_t> report) {
        return bus->setOutputReport(handle, report);
    };
    return result;
}
