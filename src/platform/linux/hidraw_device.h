#pragma once

#include "platform/hid_report_size.h"
#include "platform/linux/file_descriptor.h"
#include "platform/linux/wake_event.h"
#include "platform/platform.h"

#include <array>
#include <memory>
#include <string>

/// What a reader reads into: the longest report of a board.
using HidrawReadBuffer = std::array<std::uint8_t, hidReportSize>;

/// One open hidraw node. Everything may be called from any thread, `read` on one at a time for the same buffer.
class HidrawDevice {
public:
    /// Opens the node of a sysfs folder. Null when that fails, and when the node turns out to be another device's by
    /// now.
    static std::unique_ptr<HidrawDevice> open(const std::string& root, const std::string& nodeFolder, HidAccess access,
                                              HidMode mode);

    bool attributes(HidAttributes& attributes) const;
    bool serialNumber(std::string& serial) const;
    bool getFeature(std::span<std::uint8_t> report) const;
    HidReadResult read(HidrawReadBuffer& buffer, std::chrono::milliseconds limit) const;

    /// Permanent: every later read fails too.
    void cancelReads() const;
    HidWriteResult write(std::span<const std::uint8_t> report) const;
    HidWriteResult setOutputReport(std::span<const std::uint8_t> report) const;

private:
    std::string folder;
    FileDescriptor node;
    WakeEvent cancelled;

    enum class Wait { Readable, HungUp, Timeout, Failure };
    Wait waitForReport(std::chrono::steady_clock::time_point deadline) const;
};
