#pragma once

#include "hid/hid_handle_owner.h"
#include "hid/hid_protocol.h"
#include "hid/usb_ids.h"
#include "platform/platform.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <thread>
#include <vector>

struct HidManagerSettings {
    /// Hexadecimal texts, with or without 0x.
    std::string vendorIdText;
    std::string productIdText;
    /// Stored, but no read waits for it.
    std::int32_t readIntervalMs = 2;
    /// 0 or below: no pause between passes.
    std::int32_t scanIntervalMs = 1000;
    /// Reads by the transport's `makeSinglePendingReader`, where it has one.
    bool singlePendingRead = false;
    /// A pass also ends the session of a board that is still there but whose reader has ended, and connects the board
    /// again. Otherwise such a session delivers nothing more until a pass misses the board.
    bool reopenStoppedReaders = false;
};

/// Receives one decoded report, on the reader thread of its board, with none of the manager's locks held. The name is
/// valid during the call only. It must not call `HidManager::stop`.
using HidEventCallback =
    std::function<void(const HidProtocol::HidEvent& event, const std::string& deviceName, int index)>;

/// Receives one report exactly as the board sent it, whether it can be decoded or not, as HidEventCallback receives
/// events. The bytes are valid during the call only.
using HidReportCallback =
    std::function<void(std::span<const std::uint8_t> bytes, const std::string& deviceName, int index)>;

/// One connected board. Made and destroyed under the manager's mutex. Its destruction closes the read handle, then the
/// write handle, then frees the reader.
struct HidDeviceSession {
    /// Holds the memory that pending reads write to, so it is declared before `readHandle` and outlives it.
    HidReader reader;

    // Fixed while the reader thread lives.
    std::string path;
    std::string deviceName;
    std::string serial;
    HidProtocol::DeviceInfo deviceInfo;
    HidProtocol::ProtocolInfo protocolInfo;
    bool protocolInfoValid = false;
    int index = -1;
    /// Owns nothing when output is disabled for this board.
    HidHandleOwner writeHandle;
    HidHandleOwner readHandle;

    /// Cleared by the disconnecting thread, polled by the reader thread.
    std::atomic<bool> running{false};
    std::thread readerThread;

    // Guarded by the manager's mutex.
    HidProtocol::Report ledCache{};
    bool ledCacheValid = false;

    /// Set by the reader thread when a read fails, which ends it; seen by passes.
    std::atomic<bool> readerEnded{false};
};

struct HidDeviceSummary {
    std::string deviceName;
    int index = -1;
};

/// Owns everything between the system and the boards: finds them, keeps one session and one reader thread for each, and
/// writes to them. All operations may be called from any thread. Reader threads never take the mutex, and they are
/// joined while it is held: a thread that holds a lock that the event callback needs must not call into the manager.
class HidManager {
public:
    HidManager(HidTransport transport, Host host);
    ~HidManager();
    HidManager(const HidManager&) = delete;
    HidManager& operator=(const HidManager&) = delete;

    /// Connects the boards that are present, then goes on scanning. True if the manager is running on return; when it
    /// was running before, `callback` is dropped. False with `error` set when an id text is invalid. Throws
    /// std::system_error when no thread can be had.
    bool start(const HidManagerSettings& settings, HidEventCallback callback, std::string& error);

    /// Idempotent. Waits out the scan thread's sleep, then disconnects every board.
    void stop();

    /// Before `start` only.
    void setTraceEnabled(bool traceEnabled);

    /// Before `start` only.
    void setReportCallback(HidReportCallback callback);

    /// One pass: disconnects the boards that have gone, connects those that have come. With `reopenStoppedReaders`, it
    /// also disconnects and reconnects a board whose reader has ended. Blocks as long as their feature reports and
    /// joins take.
    void scanDevices();

    /// The connected boards, in the order of their paths.
    std::vector<HidDeviceSummary> listDevices();

    bool hasDevices();

    /// Reports to every board, present and future, whether the simulator session is up. A repeated state writes
    /// nothing.
    void sendSimStatus(bool connected);

    /// Sets one board's light. Looks for the name first, then for the index. False when there is no such board or its
    /// output is disabled; true says that there was a board to write to, not that the write reached it.
    bool sendLedControl(const std::string& deviceName, int index, const LedCommand& command);

    /// Makes the next light command to that board be written even if it equals the last one.
    void invalidateLedCache(const std::string& deviceName, int index);

    /// Reboots every board into its bootloader (BOOTSEL).
    void sendBootselCommand();

private:
    /// By path, which gives the order in which all boards are written to, listed and disconnected.
    using Sessions = std::map<std::string, std::unique_ptr<HidDeviceSession>>;

    const HidTransport transport;
    const Host host;

    // Written by `start` before any thread of the manager runs.
    std::string vendorIdText;
    std::string productIdText;
    /// A copy of the setting; no read waits for it.
    std::int32_t readIntervalMs = 2;
    std::int32_t scanIntervalMs = 1000;
    bool singlePendingRead = false;
    bool reopenStoppedReaders = false;
    HidEventCallback callback;

    // Not a Worker: the caller's own pass comes after the flag and before the thread, and `start` lets the exception of
    // a missing thread through.
    std::atomic<bool> running{false};
    std::thread scanThread;

    // Held through every connection, disconnection and write, with the joining of reader threads. Guards the sessions,
    // their LED caches and the last reports. Only the transport's mutexes, one after the other, and Logger's are taken
    // under it.
    std::mutex mutex;
    Sessions sessions;
    std::atomic<int> nextIndex{0};
    HidProtocol::Report lastSimStatus{};
    /// For a light that every new board gets, as it gets the status. There is none: each board has its own.
    HidProtocol::Report lastLedCtl{};
    bool simStatusValid = false;
    /// Stays false, with `lastLedCtl` empty.
    bool ledCtlValid = false;

    // Written before `start`, read by every thread.
    bool traceEnabled = false;
    HidReportCallback reportCallback;

    void scanLoop();
    void readLoop(HidDeviceSession& session);
    void handleReport(const HidDeviceSession& session, std::span<const std::uint8_t> bytes);
    std::vector<std::string> findMatchingPaths(const UsbIds& ids);
    bool probe(const std::string& path, HidAttributes& attributes);
    void disconnectAll();

    // These need the mutex held.
    void disconnectEnded(const std::vector<std::string>& paths);
    bool hasEnded(const HidDeviceSession& session, const std::vector<std::string>& paths) const;
    void connectBoard(const std::string& path);
    bool openHandles(HidDeviceSession& session);
    void identify(HidDeviceSession& session);
    void announce(const HidDeviceSession& session);
    void replay(const HidDeviceSession& session, const char* reportName, const HidProtocol::Report& report);
    void startReader(HidDeviceSession& session);
    /// Returns the iterator after the session that it ends.
    Sessions::iterator disconnectBoard(Sessions::iterator ended);
    HidDeviceSession* findBoard(const std::string& deviceName, int index);
    void sendReport(const HidDeviceSession& session, const char* reportName, const HidProtocol::Report& report);
    bool sendBootsel(const HidDeviceSession& session, const HidProtocol::Report& report);
    void traceOutput(const HidDeviceSession& session, const char* reportName, const HidProtocol::Report& report,
                     std::uint32_t count);
};
