#pragma once

// Everything that touches the operating system, as plain records of callables. systemPlatform() fills them for the
// current system; tests and the virtual cockpit fill them with fakes. Any callable may be called from any thread unless
// it says otherwise; none of them throws unless it says so.

#include "simconnect/simconnect_api.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

/// An open HID device. Opaque to all but the transport that returned it.
using HidHandle = std::intptr_t;
constexpr HidHandle invalidHidHandle = -1;

enum class HidAccess { ReadWrite, ReadOnly };

/// Overlapped: for a reader, whose reads another thread can cancel. Synchronous: for probing and for writes.
enum class HidMode { Synchronous, Overlapped };

struct HidAttributes {
    std::uint16_t vendorId = 0;
    std::uint16_t productId = 0;
};

enum class HidReadStatus { Data, Timeout, Failure };

struct HidReadResult {
    HidReadStatus status = HidReadStatus::Failure;
    /// With Data: what was read, possibly nothing. In the reader's own buffer, valid until the reader is called
    /// again or destroyed.
    std::span<const std::uint8_t> data;
};

/// Reads one report of at most hidReportSize bytes, waiting no longer than the limit. Called on one thread at a time.
/// It holds whatever a pending read needs (buffer, event, overlapped record), so it must outlive the handle it was made
/// for: close the handle first, then destroy the reader.
using HidReader = std::function<HidReadResult(std::chrono::milliseconds limit)>;

struct HidWriteResult {
    bool ok = false;
    /// Bytes that the system says it wrote; 0 after a failure.
    std::uint32_t count = 0;
    /// The system's error code after a failure (GetLastError, errno); 0 otherwise.
    std::uint32_t error = 0;
};

/// Access to the machine's HID devices. No handle may be used after `close`; different handles are independent.
struct HidTransport {
    /// The paths of all HID devices present, of any vendor, in the system's order.
    std::function<std::vector<std::string>()> enumerate;
    /// Opens a path, shared with other programs for reading and writing; invalidHidHandle when that fails.
    std::function<HidHandle(const std::string& path, HidAccess access, HidMode mode)> open;
    std::function<void(HidHandle handle)> close;
    /// False when the device doesn't answer; `attributes` is then unchanged.
    std::function<bool(HidHandle handle, HidAttributes& attributes)> attributes;
    /// The USB serial number as UTF-8. False when there is none; `serial` is then unchanged.
    std::function<bool(HidHandle handle, std::string& serial)> serialNumber;
    /// Fills a feature report, whose first byte the caller has set to the report id.
    std::function<bool(HidHandle handle, std::span<std::uint8_t> report)> getFeature;
    /// Makes the reader of a handle that was opened Overlapped.
    std::function<HidReader(HidHandle handle)> makeReader;
    /// Ends all reads pending on the handle, and makes a read that comes later fail, from another thread.
    std::function<void(HidHandle handle)> cancelReads;
    /// Writes one output report, report id first, on a Synchronous handle.
    std::function<HidWriteResult(HidHandle handle, std::span<const std::uint8_t> report)> write;
    /// Sends one output report over the control pipe; `count` stays 0.
    std::function<HidWriteResult(HidHandle handle, std::span<const std::uint8_t> report)> setOutputReport;
    /// Makes a reader as `makeReader` does, but one that never has two reads pending: a read that timed out is waited
    /// for again by the next call, so that no report overwrites another. It also has the system keep as many reports
    /// for it as it can. May be left empty on a system where reads never accumulate; `makeReader` is used then.
    std::function<HidReader(HidHandle handle)> makeSinglePendingReader;
};

/// The operations of the simulator's client library, with the arguments and results of simconnect_api.h.
struct SimConnectLibrary {
    std::function<decltype(SimConnect_Open)> open;
    std::function<decltype(SimConnect_Close)> close;
    std::function<decltype(SimConnect_CallDispatch)> callDispatch;
    std::function<decltype(SimConnect_AddToDataDefinition)> addToDataDefinition;
    std::function<decltype(SimConnect_RequestDataOnSimObject)> requestDataOnSimObject;
    std::function<decltype(SimConnect_MapClientEventToSimEvent)> mapClientEventToSimEvent;
    std::function<decltype(SimConnect_TransmitClientEvent)> transmitClientEvent;
    std::function<decltype(SimConnect_MapClientDataNameToID)> mapClientDataNameToId;
    std::function<decltype(SimConnect_AddToClientDataDefinition)> addToClientDataDefinition;
    std::function<decltype(SimConnect_RequestClientData)> requestClientData;
    std::function<decltype(SimConnect_SetClientData)> setClientData;
    /// What the user should know about how the library was found, as a line for the log; empty when there is nothing to
    /// report. Loads the library if it isn't loaded yet. May be left empty, which means the same.
    std::function<std::string()> notice;
};

/// Notifications of HID devices that arrive or leave. `setUp`, `run` and `tearDown` are called on one thread, in this
/// order.
struct DeviceNotificationSource {
    /// Starts listening. False with the reason in `error` on failure; nothing is then left to tear down.
    std::function<bool(std::string& error)> setUp;
    /// Calls `onChange` on this thread for each arrival or removal, until `requestEnd`.
    std::function<void(const std::function<void()>& onChange)> run;
    std::function<void()> tearDown;
    /// Makes `run` return. Called from another thread, after a successful `setUp`.
    std::function<void()> requestEnd;
};

enum class SingleInstance { Acquired, AlreadyRunning, Unavailable };

/// Takes the event's number: 0 interrupt, 1 break, 2 close. True when it was handled.
using ControlHandler = bool (*)(unsigned event);

/// The process and its surroundings.
struct Host {
    /// Calls `visit` with the executable name of each running process (UTF-8, no folder) until it returns true. Returns
    /// whether it did: false also when the system gives no list.
    std::function<bool(const std::function<bool(std::string_view name)>& visit)> findProcess;
    /// The running executable's path; empty when the system doesn't give it or it has 260 bytes or more.
    std::function<std::string()> executablePath;
    /// The folder for per-machine data or, where this process may not use that, for the user's data; empty when there
    /// is neither. Makes nothing.
    std::function<std::string()> commonDataFolder;
    std::function<std::optional<std::string>(const std::string& name)> environmentVariable;
    /// Takes the lock of that name for the rest of the process's life.
    std::function<SingleInstance(const std::string& name)> acquireSingleInstance;
    /// Joins the console of the process that started this one, if there is one. From here on, writing to an output
    /// without a reader fails instead of ending the process.
    std::function<void()> attachConsole;
    /// Calls `handler` on interrupt, break and close events, on a thread of the system or in a signal frame.
    std::function<void(ControlHandler handler)> installControlHandler;
    /// A plain sleep of the calling thread. Zero or less returns at once.
    std::function<void(std::chrono::milliseconds duration)> sleepFor;
    /// The monotonic clock in nanoseconds.
    std::function<std::int64_t()> now;
    /// Starts a thread. Throws std::system_error when the system gives none.
    std::function<std::thread(std::function<void()> body)> startThread;
    /// What the user should know about the system, as a line for the log; empty when there is nothing to report. May be
    /// left empty, which means the same.
    std::function<std::string()> systemNotice;
};

struct Platform {
    HidTransport hid;
    SimConnectLibrary simConnect;
    DeviceNotificationSource deviceNotifications;
    Host host;
};

/// The records for the system that this program runs on.
Platform systemPlatform();
