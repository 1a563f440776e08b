#pragma once

#include "platform/hid_report_size.h"
#include "platform/platform.h"

#include <windows.h>

#include <array>
#include <memory>
#include <mutex>
#include <string>

/// What the system writes to when a pending read ends.
struct HidReadMemory {
    OVERLAPPED overlapped{};
    /// The longest report of a board.
    std::array<std::uint8_t, hidReportSize> buffer{};
};

/// A reader's reads. All that are pending share one record of memory. It outlives this object by many others of its
/// kind: under Wine the end of a cancelled read may be written by another thread, after the handle was closed.
struct HidRead {
    HidRead();
    ~HidRead();
    HidRead(const HidRead&) = delete;
    HidRead& operator=(const HidRead&) = delete;

    HANDLE event = nullptr;
    std::shared_ptr<HidReadMemory> memory = std::make_shared<HidReadMemory>();
    /// `readSinglePending` has left a read pending.
    bool isPending = false;
};

/// One open HID device. Everything may be called from any thread, `read` on one at a time.
class HidDevice {
public:
    /// Null when the device can't be opened.
    static std::unique_ptr<HidDevice> open(const std::string& path, HidAccess access, HidMode mode);
    explicit HidDevice(HANDLE handle) : handle(handle) {}
    ~HidDevice() { CloseHandle(handle); }
    HidDevice(const HidDevice&) = delete;
    HidDevice& operator=(const HidDevice&) = delete;

    bool attributes(HidAttributes& attributes) const;
    bool serialNumber(std::string& serial) const;
    bool getFeature(std::span<std::uint8_t> report) const;

    /// A timeout leaves the read pending, and the next call issues another one into the same buffer. A report that
    /// completes an earlier read before the next call waits is lost. That is the bridge's fixed behaviour; with
    /// `extensions.singlePendingRead` it calls `readSinglePending` instead. Cancelling ends all pending reads.
    HidReadResult read(HidRead& read, std::chrono::milliseconds limit);

    /// A timeout leaves the read pending, and the next call waits for it again, so every report is returned. Don't mix
    /// with `read` on the same `HidRead`.
    HidReadResult readSinglePending(HidRead& read, std::chrono::milliseconds limit);

    /// Makes the driver keep as many reports as it can for this handle between reads. A refusal is ignored.
    void keepMoreReports() const;

    /// Permanent: every later read fails too.
    void cancelReads();
    HidWriteResult write(std::span<const std::uint8_t> report) const;
    HidWriteResult setOutputReport(std::span<const std::uint8_t> report) const;

private:
    const HANDLE handle;

    // Guards `cancelled`. Held while a read is issued and while all are cancelled, so that no read starts after the
    // cancelling.
    std::mutex issueMutex;
    bool cancelled = false;

    enum class Issue { Complete, Pending, Failure };
    Issue issueRead(HidRead& read, DWORD& count);
    HidReadResult waitForRead(HidRead& read, std::chrono::milliseconds limit) const;
};
