#include "simulation/boards/virtual_hid_bus_state.h"

#include "hid/hex_text.h"

#include <algorithm>
#include <utility>

namespace {

// Error codes of the calls, by the meaning they have on Windows.
constexpr std::uint32_t errorAccessDenied = 5;
constexpr std::uint32_t errorInvalidHandle = 6;
constexpr std::uint32_t errorDeviceGone = 1167;

/// How many input reports a handle keeps for its reader.
constexpr std::size_t queueLimit = 64;

std::string kindText(HidOpenKind kind) {
    return std::string(kind.access == HidAccess::ReadWrite ? "read-write" : "read-only") +
           (kind.mode == HidMode::Overlapped ? " overlapped" : " synchronous");
}

std::string outcomeText(bool ok) {
    return ok ? ": ok" : ": failed";
}

std::string outcomeText(const HidWriteResult& result) {
    return result.ok ? ": " + std::to_string(result.count) : ": error " + std::to_string(result.error);
}

/// For the record of a call; empty for a handle that isn't open.
std::string recordedPath(const std::shared_ptr<VirtualHidOpenHandle>& handle) {
    return handle ? handle->connection->path : std::string();
}

} // namespace

std::shared_ptr<VirtualHidConnection>
VirtualHidBus::State::connectionOf(const std::shared_ptr<VirtualBoard>& board) const {
    const auto found = std::find_if(connections.begin(), connections.end(),
                                    [&](const auto& connection) { return connection->board == board; });
    return found == connections.end() ? nullptr : *found;
}

std::shared_ptr<VirtualHidOpenHandle> VirtualHidBus::State::find(HidHandle handle) {
    const auto found = handles.find(handle);
    if (found == handles.end()) {
        ++misuses;
        return nullptr;
    }
    return found->second;
}

const HidLinkFaults& VirtualHidBus::State::faultsOf(const VirtualHidConnection& connection) {
    static const HidLinkFaults none;
    const auto found = faults.find(connection.board);
    return found == faults.end() ? none : found->second;
}

void VirtualHidBus::State::connect(const std::shared_ptr<VirtualBoard>& board, const std::string& path) {
    const auto connection = std::make_shared<VirtualHidConnection>();
    connection->path = path;
    connection->board = board;
    connections.push_back(connection);
    board->powerOn([bus = weak_from_this(), link = std::weak_ptr(connection)](std::span<const std::uint8_t> report) {
        const auto lockedBus = bus.lock();
        const auto lockedLink = link.lock();
        if (lockedBus && lockedLink) {
            lockedBus->deliverInput(*lockedLink, report);
        }
    });
}

void VirtualHidBus::State::pull(const std::shared_ptr<VirtualHidConnection>& connection) {
    connection->present = false;
    connection->board->powerOff();
    wakeReaders(*connection);
    connections.erase(std::find(connections.begin(), connections.end(), connection));
}

void VirtualHidBus::State::wakeReaders(const VirtualHidConnection& connection) {
    for (const auto& [number, handle] : handles) {
        if (handle->connection.get() == &connection) {
            handle->wake.notify_all();
        }
    }
}

void VirtualHidBus::State::record(HidCall call, const std::string& path, std::string text) {
    if (recording) {
        auto& records = call == HidCall::Read ? readRecords : callRecords;
        records.push_back({call, path, std::move(text)});
    }
}

std::vector<std::string> VirtualHidBus::State::enumerate() {
    const std::lock_guard lock(mutex);
    record(HidCall::Enumerate, "", "enumerate");
    std::vector<std::string> paths;
    paths.reserve(connections.size());
    for (const auto& connection : connections) {
        paths.push_back(connection->path);
    }
    return paths;
}

HidHandle VirtualHidBus::State::open(const std::string& path, HidOpenKind kind) {
    const std::lock_guard lock(mutex);
    const auto found = std::find_if(connections.begin(), connections.end(),
                                    [&](const auto& connection) { return connection->path == path; });
    bool ok = found != connections.end();
    if (ok) {
        const auto& refused = faultsOf(**found).refusedOpens;
        ok = std::find(refused.begin(), refused.end(), kind) == refused.end();
    }
    record(HidCall::Open, path, "open " + path + " " + kindText(kind) + outcomeText(ok));
    if (!ok) {
        return invalidHidHandle;
    }
    const auto handle = std::make_shared<VirtualHidOpenHandle>();
    handle->connection = *found;
    handle->kind = kind;
    handles.emplace(++lastHandle, handle);
    return lastHandle;
}

void VirtualHidBus::State::close(HidHandle handle) {
    const std::lock_guard lock(mutex);
    const auto found = find(handle);
    const auto path = recordedPath(found);
    record(HidCall::Close, path, "close " + path);
    if (found) {
        found->closed = true;
        found->wake.notify_all();
        handles.erase(handle);
    }
}

bool VirtualHidBus::State::attributes(HidHandle handle, HidAttributes& result) {
    const std::lock_guard lock(mutex);
    const auto found = find(handle);
    const auto path = recordedPath(found);
    const bool ok = found && found->connection->present && !faultsOf(*found->connection).attributesFail;
    if (ok) {
        const auto& model = found->connection->board->model();
        result = {model.vendorId, model.productId};
    }
    record(HidCall::Attributes, path, "attributes " + path + outcomeText(ok));
    return ok;
}

bool VirtualHidBus::State::serialNumber(HidHandle handle, std::string& serial) {
    const std::lock_guard lock(mutex);
    const auto found = find(handle);
    const auto path = recordedPath(found);
    const bool ok = found && found->connection->present && found->connection->board->model().serial &&
                    !faultsOf(*found->connection).serialFails;
    if (ok) {
        serial = *found->connection->board->model().serial;
    }
    record(HidCall::SerialNumber, path, "serial " + path + outcomeText(ok));
    return ok;
}

bool VirtualHidBus::State::getFeature(HidHandle handle, std::span<std::uint8_t> report) {
    const std::lock_guard lock(mutex);
    const auto found = find(handle);
    const auto path = recordedPath(found);
    const auto asked = hexText(report.first(1));
    std::optional<HidProtocol::Report> reply;
    if (found && found->connection->present) {
        const auto& link = faultsOf(*found->connection);
        const auto replacement = link.featureReplies.find(report[0]);
        if (replacement != link.featureReplies.end()) {
            reply = replacement->second;
        } else if (!link.failingFeatures.contains(report[0])) {
            reply = found->connection->board->featureReply(report[0]);
        }
    }
    if (reply) {
        std::copy_n(reply->begin(), std::min(reply->size(), report.size()), report.begin());
    }
    record(HidCall::GetFeature, path, "feature " + path + " " + asked + outcomeText(reply.has_value()));
    return reply.has_value();
}

std::shared_ptr<VirtualHidOpenHandle> VirtualHidBus::State::readerHandle(HidHandle handle) {
    const std::lock_guard lock(mutex);
    auto found = find(handle);
    if (found && found->kind.mode != HidMode::Overlapped) {
        ++misuses;
        found = nullptr;
    }
    const auto path = recordedPath(found);
    record(HidCall::MakeReader, path, "reader " + path + outcomeText(found != nullptr));
    return found;
}

void VirtualHidBus::State::cancelReads(HidHandle handle) {
    const std::lock_guard lock(mutex);
    const auto found = find(handle);
    const auto path = recordedPath(found);
    record(HidCall::CancelReads, path, "cancel " + path);
    if (found) {
        found->cancelled = true;
        found->wake.notify_all();
    }
}

HidReadResult VirtualHidBus::State::read(VirtualHidOpenHandle& handle, std::chrono::milliseconds limit,
                                         std::vector<std::uint8_t>& buffer) {
    std::unique_lock lock(mutex);
    std::optional<HidReadResult> result;
    ++handle.pendingReads;
    handle.wake.wait_for(lock, limit, [&] { return (result = readOutcome(handle, buffer)).has_value(); });
    --handle.pendingReads;
    if (!result) {
        return {HidReadStatus::Timeout, {}};
    }
    const bool ok = result->status == HidReadStatus::Data;
    const auto& path = handle.connection->path;
    record(HidCall::Read, path, "read " + path + (ok ? ": " + hexText(buffer) : outcomeText(false)));
    return *result;
}

std::optional<HidReadResult> VirtualHidBus::State::readOutcome(VirtualHidOpenHandle& handle,
                                                               std::vector<std::uint8_t>& buffer) {
    if (handle.closed || handle.cancelled || faultsOf(*handle.connection).readsFail) {
        return HidReadResult{};
    }
    if (!handle.queue.empty()) {
        buffer = std::move(handle.queue.front());
        handle.queue.pop_front();
        return HidReadResult{HidReadStatus::Data, buffer};
    }
    return handle.connection->present ? std::nullopt : std::optional(HidReadResult{});
}

void VirtualHidBus::State::deliverInput(const VirtualHidConnection& connection, std::span<const std::uint8_t> report) {
    const std::lock_guard lock(mutex);
    if (!connection.present) {
        return;
    }
    const bool cutId = faultsOf(connection).readsLackReportId && !report.empty();
    const auto whole = report.first(std::min(report.size(), HidProtocol::reportSize));
    const auto payload = whole.subspan(cutId ? 1 : 0);
    for (const auto& [number, handle] : handles) {
        if (handle->connection.get() != &connection || handle->kind.mode != HidMode::Overlapped) {
            continue;
        }
        if (handle->queue.size() < queueLimit) {
            handle->queue.emplace_back(payload.begin(), payload.end());
            handle->wake.notify_all();
        }
    }
}

HidWriteResult VirtualHidBus::State::writeOutcome(const VirtualHidOpenHandle& handle, std::size_t size) {
    const auto& link = faultsOf(*handle.connection);
    if (!handle.connection->present) {
        return {false, 0, errorDeviceGone};
    }
    if (handle.kind.access == HidAccess::ReadOnly) {
        return {false, 0, errorAccessDenied};
    }
    if (link.writeError != 0) {
        return {false, 0, link.writeError};
    }
    const auto whole = static_cast<std::uint32_t>(size);
    return {true, std::min(whole, link.writeCount.value_or(whole)), 0};
}

HidWriteResult VirtualHidBus::State::write(HidHandle handle, std::span<const std::uint8_t> report) {
    HidWriteResult result{false, 0, errorInvalidHandle};
    std::shared_ptr<VirtualHidConnection> target;
    {
        const std::lock_guard lock(mutex);
        const auto found = find(handle);
        if (found) {
            target = found->connection;
            misuses += found->kind.mode == HidMode::Overlapped ? 1U : 0U;
            result = writeOutcome(*found, report.size());
        }
        const auto path = target ? target->path : std::string();
        record(HidCall::Write, path, "write " + path + " " + hexText(report) + outcomeText(result));
    }
    if (result.ok) {
        deliverOutput(target, OutputCall::Write, report.first(result.count));
    }
    return result;
}

HidWriteResult VirtualHidBus::State::setOutputReport(HidHandle handle, std::span<const std::uint8_t> report) {
    HidWriteResult result{false, 0, errorInvalidHandle};
    std::shared_ptr<VirtualHidConnection> target;
    {
        const std::lock_guard lock(mutex);
        const auto found = find(handle);
        if (found) {
            target = found->connection;
            const auto error = target->present ? faultsOf(*target).setOutputReportError : errorDeviceGone;
            result = {error == 0, 0, error};
        }
        const auto path = target ? target->path : std::string();
        record(HidCall::SetOutputReport, path,
               "set-output " + path + " " + hexText(report) + (result.ok ? outcomeText(true) : outcomeText(result)));
    }
    if (result.ok) {
        deliverOutput(target, OutputCall::SetOutputReport, report);
    }
    return result;
}

void VirtualHidBus::State::deliverOutput(const std::shared_ptr<VirtualHidConnection>& connection, OutputCall call,
                                         std::span<const std::uint8_t> report) {
    connection->board->receiveOutput(call, report);
    if (connection->board->inBootsel()) {
        const std::lock_guard lock(mutex);
        if (connection->present) {
            pull(connection);
        }
    }
}
