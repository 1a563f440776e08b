// The manager's writes: all synchronous, on the caller's thread, with the mutex held.

#include "hid/hex_text.h"
#include "hid/hid_manager.h"
#include "logging/logger.h"

#include <algorithm>

void HidManager::sendSimStatus(bool connected) {
    const auto report = HidProtocol::encodeSimStatus(connected);
    const std::lock_guard lock(mutex);
    if (simStatusValid && report == lastSimStatus) {
        return;
    }
    // Kept before any write and with no board at all, because boards that come later get it at connection. A board
    // whose write fails learns the state at the next change.
    lastSimStatus = report;
    simStatusValid = true;
    for (const auto& [path, session] : sessions) {
        if (session->writeHandle.isOpen()) {
            sendReport(*session, "sim_status", report);
        }
    }
}

bool HidManager::sendLedControl(const std::string& deviceName, int index, const LedCommand& command) {
    const std::lock_guard lock(mutex);
    auto* const session = findBoard(deviceName, index);
    if (session == nullptr || !session->writeHandle.isOpen()) {
        return false;
    }
    const auto report = HidProtocol::encodeLedCtl(command);
    if (session->ledCacheValid && report == session->ledCache) {
        return true;
    }
    sendReport(*session, "led_ctl", report);
    // A failed report is kept as well. Otherwise each periodic push would write to a board that refuses it and log
    // another warning.
    session->ledCache = report;
    session->ledCacheValid = true;
    return true;
}

void HidManager::invalidateLedCache(const std::string& deviceName, int index) {
    const std::lock_guard lock(mutex);
    if (auto* const session = findBoard(deviceName, index)) {
        session->ledCacheValid = false;
    }
}

void HidManager::sendBootselCommand() {
    const auto report = HidProtocol::encodeBootsel();
    const std::lock_guard lock(mutex);
    if (traceEnabled) {
        Logger::instance().debug("HID OUT device_ctl action=" + std::to_string(HidProtocol::deviceActionBootsel) +
                                 " data=" + hexText(report));
    }
    bool accepted = false;
    for (const auto& [path, session] : sessions) {
        if (session->writeHandle.isOpen()) {
            accepted = sendBootsel(*session, report) || accepted;
        }
    }
    if (!accepted) {
        logWarn("No HID device accepted BOOTSEL command");
    }
}

// The name first: a replugged board keeps its name, but its old index now belongs to another board or to none.
HidDeviceSession* HidManager::findBoard(const std::string& deviceName, int index) {
    const auto first = [this](auto matches) -> HidDeviceSession* {
        const auto found = std::find_if(sessions.begin(), sessions.end(), matches);
        return found == sessions.end() ? nullptr : found->second.get();
    };
    HidDeviceSession* session = nullptr;
    if (!deviceName.empty()) {
        session = first([&](const auto& entry) { return entry.second->deviceName == deviceName; });
    }
    if (session == nullptr && index >= 0) {
        session = first([&](const auto& entry) { return entry.second->index == index; });
    }
    return session;
}

void HidManager::sendReport(const HidDeviceSession& session, const char* reportName,
                            const HidProtocol::Report& report) {
    const auto result = transport.write(session.writeHandle, report);
    if (!result.ok) {
        logWarn("HID " + std::string(reportName) + " write failed for " + session.deviceName +
                " (err=" + std::to_string(result.error) + ")");
    }
    traceOutput(session, reportName, report, result.count);
}

// Nothing repeats this report, unlike a status or a light. So a short write is a failure here, and after a failure the
// report is sent over the control pipe.
bool HidManager::sendBootsel(const HidDeviceSession& session, const HidProtocol::Report& report) {
    const auto written = transport.write(session.writeHandle, report);
    if (written.ok && written.count == report.size()) {
        logInfo("BOOTSEL command sent to " + session.deviceName + " via WriteFile");
        return true;
    }
    const auto set = transport.setOutputReport(session.writeHandle, report);
    if (set.ok) {
        logInfo("BOOTSEL command sent to " + session.deviceName + " via HidD_SetOutputReport");
        return true;
    }
    logWarn("Failed to send BOOTSEL command to " + session.deviceName +
            " (WriteFile err=" + std::to_string(written.error) + ", bytes=" + std::to_string(written.count) +
            ", HidD_SetOutputReport err=" + std::to_string(set.error) + ")");
    return false;
}

void HidManager::traceOutput(const HidDeviceSession& session, const char* reportName, const HidProtocol::Report& report,
                             std::uint32_t count) {
    if (traceEnabled) {
        Logger::instance().debug("HID OUT " + std::string(reportName) + " device=" + session.deviceName +
                                 " bytes=" + std::to_string(count) + " data=" + hexText(report));
    }
}
