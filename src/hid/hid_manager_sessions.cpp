// The life of one board's session: connection, its reader thread, disconnection.

#include "hid/feature_reports.h"
#include "hid/hex_text.h"
#include "hid/hid_log_lines.h"
#include "hid/hid_manager.h"
#include "logging/logger.h"

#include <chrono>
#include <utility>

namespace {

/// Only how often an idle reader checks whether to go on: disconnecting cancels its read.
constexpr std::chrono::milliseconds readLimit{1000};

std::string protocolText(const HidProtocol::ProtocolInfo& info) {
    return " proto=" + std::to_string(info.protocolMajor) + "." + std::to_string(info.protocolMinor) + " flags=0x" +
           hexText({&info.protocolFlags, 1});
}

} // namespace

void HidManager::connectBoard(const std::string& path) {
    auto session = std::make_unique<HidDeviceSession>();
    session->path = path;
    if (!openHandles(*session)) {
        return;
    }
    identify(*session);
    // Never used again, so that an index from before a replug doesn't reach another board.
    session->index = nextIndex++;
    announce(*session);
    if (simStatusValid) {
        replay(*session, "sim_status", lastSimStatus);
    }
    // Never happens: nothing sets the flag. Each board has its own light, and the output worker's next pass sends a new
    // board its light within a second.
    if (ledCtlValid) {
        replay(*session, "led_ctl", lastLedCtl);
    }
    startReader(*session);
    sessions.emplace(path, std::move(session));
}

bool HidManager::openHandles(HidDeviceSession& session) {
    session.readHandle = openForReading(transport, session.path, HidMode::Overlapped);
    if (!session.readHandle.isOpen()) {
        logWarn("Failed to open HID device: " + session.path);
        return false;
    }
    session.writeHandle = {transport, transport.open(session.path, HidAccess::ReadWrite, HidMode::Synchronous)};
    if (!session.writeHandle.isOpen()) {
        logWarn("Failed to open HID write handle; output disabled for: " + session.path);
    }
    return true;
}

void HidManager::identify(HidDeviceSession& session) {
    if (!transport.serialNumber(session.readHandle, session.serial)) {
        session.serial.clear();
    }
    if (readDeviceInfo(transport, session.readHandle, session.deviceInfo)) {
        session.deviceName = HidProtocol::boardIdText(session.deviceInfo);
    } else {
        // Without a message: a board whose firmware doesn't answer works too, only under a less readable name.
        session.deviceName = session.serial.empty() ? session.path : session.serial;
    }
    session.protocolInfoValid = readProtocolInfo(transport, session.readHandle, session.protocolInfo);
}

void HidManager::announce(const HidDeviceSession& session) {
    logInfo(hidConnectionLine({session.deviceName, session.index}));
    if (session.protocolInfoValid) {
        Logger::instance().debug("HID protocol info: device=" + session.deviceName +
                                 protocolText(session.protocolInfo));
    }
}

void HidManager::replay(const HidDeviceSession& session, const char* reportName, const HidProtocol::Report& report) {
    if (session.writeHandle.isOpen()) {
        // No warning on a failure: the board has just been plugged in, and the next change is written to it anyway.
        const auto result = transport.write(session.writeHandle, report);
        traceOutput(session, reportName, report, result.count);
    }
}

void HidManager::startReader(HidDeviceSession& session) {
    const bool single = singlePendingRead && transport.makeSinglePendingReader;
    session.reader = (single ? transport.makeSinglePendingReader : transport.makeReader)(session.readHandle);
    session.running = true;
    session.readerThread = host.startThread([this, &session] { readLoop(session); });
}

HidManager::Sessions::iterator HidManager::disconnectBoard(Sessions::iterator ended) {
    HidDeviceSession& session = *ended->second;
    const std::string deviceName = session.deviceName;
    session.running = false;
    transport.cancelReads(session.readHandle);
    session.readerThread.join();
    // Closes the handles, now that no thread reads from them.
    const auto next = sessions.erase(ended);
    logInfo("HID device disconnected: " + deviceName);
    return next;
}

void HidManager::readLoop(HidDeviceSession& session) {
    // A read that is still pending may write to the reader's buffer at any moment. One copy keeps trace and event in
    // agreement.
    std::vector<std::uint8_t> report;
    while (session.running) {
        const auto result = session.reader(readLimit);
        if (result.status == HidReadStatus::Failure) {
            // Silently, and the session stays: a board that is pulled fails its read first, and the next pass, which
            // finds its path gone, logs the disconnection once.
            session.readerEnded = true;
            return;
        }
        if (result.status == HidReadStatus::Data && !result.data.empty()) {
            report.assign(result.data.begin(), result.data.end());
            handleReport(session, report);
        }
    }
}

void HidManager::handleReport(const HidDeviceSession& session, std::span<const std::uint8_t> bytes) {
    if (traceEnabled) {
        Logger::instance().debug(hidReportLine(session.deviceName, bytes));
    }
    if (reportCallback) {
        reportCallback(bytes, session.deviceName, session.index);
    }
    HidProtocol::HidEvent event;
    std::string ignoredError;
    if (HidProtocol::decodeInputReport(bytes.data(), bytes.size(), event, ignoredError) && callback) {
        callback(event, session.deviceName, session.index);
    }
}
