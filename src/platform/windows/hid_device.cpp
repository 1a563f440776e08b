#include "platform/windows/hid_device.h"

#include "platform/windows/hid_api.h"
#include "platform/windows/wide_text.h"

#include <cstddef>
#include <deque>
#include <utility>
#include <vector>

namespace {

/// The driver's maximum. By default it keeps 32, which a fast knob can fill while the reader writes trace lines.
constexpr ULONG mostKeptReports = 512;

/// Keeps the memory of the latest readers. Nothing reports the end of the last of several reads on one record, so age
/// decides: by the time that this many readers have come and gone, the system has let go.
void retire(std::shared_ptr<HidReadMemory> memory) {
    constexpr std::size_t mostRetired = 64;
    // Guards `retired`. Nothing is called under it.
    static std::mutex mutex;
    static std::deque<std::shared_ptr<HidReadMemory>> retired;
    const std::lock_guard lock(mutex);
    retired.push_back(std::move(memory));
    if (retired.size() > mostRetired) {
        retired.pop_front();
    }
}

} // namespace

HidRead::HidRead() : event(CreateEventA(nullptr, TRUE, FALSE, nullptr)) {
    memory->overlapped.hEvent = event;
}

HidRead::~HidRead() {
    retire(std::move(memory));
    if (event != nullptr) {
        CloseHandle(event);
    }
}

std::unique_ptr<HidDevice> HidDevice::open(const std::string& path, HidAccess access, HidMode mode) {
    const DWORD accessRights = access == HidAccess::ReadWrite ? GENERIC_READ | GENERIC_WRITE : GENERIC_READ;
    const DWORD flags = mode == HidMode::Overlapped ? FILE_FLAG_OVERLAPPED : 0;
    const HANDLE handle = CreateFileA(path.c_str(), accessRights, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      OPEN_EXISTING, flags, nullptr);
    return handle == INVALID_HANDLE_VALUE ? nullptr : std::make_unique<HidDevice>(handle);
}

bool HidDevice::attributes(HidAttributes& attributes) const {
    HIDD_ATTRIBUTES reported{};
    reported.Size = sizeof reported;
    if (!HidD_GetAttributes(handle, &reported)) {
        return false;
    }
    attributes.vendorId = reported.VendorID;
    attributes.productId = reported.ProductID;
    return true;
}

bool HidDevice::serialNumber(std::string& serial) const {
    constexpr std::size_t answerLength = 256;
    // One more than the device may fill, so that the text always ends in a zero.
    std::array<wchar_t, answerLength + 1> wide{};
    if (!HidD_GetSerialNumberString(handle, wide.data(), answerLength * sizeof(wchar_t))) {
        return false;
    }
    const std::string text = utf8FromWide(wide.data());
    if (text.empty()) {
        return false;
    }
    serial = text;
    return true;
}

bool HidDevice::getFeature(std::span<std::uint8_t> report) const {
    return HidD_GetFeature(handle, report.data(), static_cast<ULONG>(report.size())) != FALSE;
}

HidDevice::Issue HidDevice::issueRead(HidRead& read, DWORD& count) {
    const std::lock_guard lock(issueMutex);
    if (cancelled) {
        return Issue::Failure;
    }
    ResetEvent(read.event);
    HidReadMemory& memory = *read.memory;
    if (ReadFile(handle, memory.buffer.data(), static_cast<DWORD>(memory.buffer.size()), &count, &memory.overlapped)) {
        return Issue::Complete;
    }
    return GetLastError() == ERROR_IO_PENDING ? Issue::Pending : Issue::Failure;
}

HidReadResult HidDevice::waitForRead(HidRead& read, std::chrono::milliseconds limit) const {
    const DWORD wait = WaitForSingleObject(read.event, static_cast<DWORD>(limit.count()));
    if (wait == WAIT_TIMEOUT) {
        return {HidReadStatus::Timeout, {}};
    }
    DWORD count = 0;
    if (wait != WAIT_OBJECT_0 || !GetOverlappedResult(handle, &read.memory->overlapped, &count, FALSE)) {
        return {};
    }
    return {HidReadStatus::Data, std::span(read.memory->buffer).first(count)};
}

HidReadResult HidDevice::read(HidRead& read, std::chrono::milliseconds limit) {
    DWORD count = 0;
    switch (issueRead(read, count)) {
    case Issue::Complete:
        return {HidReadStatus::Data, std::span(read.memory->buffer).first(count)};
    case Issue::Pending:
        return waitForRead(read, limit);
    case Issue::Failure:
        break;
    }
    return {};
}

HidReadResult HidDevice::readSinglePending(HidRead& read, std::chrono::milliseconds limit) {
    const HidReadResult result = read.isPending ? waitForRead(read, limit) : this->read(read, limit);
    read.isPending = result.status == HidReadStatus::Timeout;
    return result;
}

void HidDevice::keepMoreReports() const {
    HidD_SetNumInputBuffers(handle, mostKeptReports);
}

void HidDevice::cancelReads() {
    const std::lock_guard lock(issueMutex);
    cancelled = true;
    CancelIoEx(handle, nullptr);
}

HidWriteResult HidDevice::write(std::span<const std::uint8_t> report) const {
    DWORD count = 0;
    if (!WriteFile(handle, report.data(), static_cast<DWORD>(report.size()), &count, nullptr)) {
        return {.ok = false, .count = 0, .error = GetLastError()};
    }
    return {.ok = true, .count = count, .error = 0};
}

HidWriteResult HidDevice::setOutputReport(std::span<const std::uint8_t> report) const {
    // The call's parameter isn't const, though it changes nothing.
    std::vector<std::uint8_t> bytes(report.begin(), report.end());
    if (!HidD_SetOutputReport(handle, bytes.data(), static_cast<ULONG>(bytes.size()))) {
        return {.ok = false, .count = 0, .error = GetLastError()};
    }
    return {.ok = true, .count = 0, .error = 0};
}
