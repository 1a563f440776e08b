#pragma once

// The state that a VirtualHidBus shares with its transports. Private to both.

#include "simulation/boards/virtual_hid_bus.h"

#include <condition_variable>
#include <deque>
#include <mutex>

/// One plugging of one board.
struct VirtualHidConnection {
    std::string path;
    std::shared_ptr<VirtualBoard> board;
    bool present = true;
};

struct VirtualHidOpenHandle {
    std::shared_ptr<VirtualHidConnection> connection;
    HidOpenKind kind;
    std::deque<std::vector<std::uint8_t>> queue;
    bool cancelled = false;
    bool closed = false;
    std::size_t pendingReads = 0;
    /// Notified when a read may have something to return.
    std::condition_variable wake;
};

struct VirtualHidBus::State : std::enable_shared_from_this<VirtualHidBus::State> {
    // Guards everything below, connections and handles included. Boards are called without it, except to be powered.
    mutable std::mutex mutex;
    std::vector<std::shared_ptr<VirtualHidConnection>> connections;
    std::map<std::shared_ptr<VirtualBoard>, HidLinkFaults> faults;
    // The open handles. No number is given twice.
    std::map<HidHandle, std::shared_ptr<VirtualHidOpenHandle>> handles;
    HidHandle lastHandle = 0;
    std::uint64_t lastPlug = 0;
    std::uint64_t misuses = 0;
    bool recording = true;
    std::vector<HidCallRecord> callRecords;
    std::vector<HidCallRecord> readRecords;

    std::vector<std::string> enumerate();
    HidHandle open(const std::string& path, HidOpenKind kind);
    void close(HidHandle handle);
    bool attributes(HidHandle handle, HidAttributes& result);
    bool serialNumber(HidHandle handle, std::string& serial);
    bool getFeature(HidHandle handle, std::span<std::uint8_t> report);
    std::shared_ptr<VirtualHidOpenHandle> readerHandle(HidHandle handle);
    HidReadResult read(VirtualHidOpenHandle& handle, std::chrono::milliseconds limit,
                       std::vector<std::uint8_t>& buffer);
    void cancelReads(HidHandle handle);
    HidWriteResult write(HidHandle handle, std::span<const std::uint8_t> report);
    HidWriteResult setOutputReport(HidHandle handle, std::span<const std::uint8_t> report);

    void deliverInput(const VirtualHidConnection& connection, std::span<const std::uint8_t> report);

    // These need the mutex held.
    std::shared_ptr<VirtualHidConnection> connectionOf(const std::shared_ptr<VirtualBoard>& board) const;
    std::shared_ptr<VirtualHidOpenHandle> find(HidHandle handle);
    const HidLinkFaults& faultsOf(const VirtualHidConnection& connection);
    void connect(const std::shared_ptr<VirtualBoard>& board, const std::string& path);
    void pull(const std::shared_ptr<VirtualHidConnection>& connection);
    void wakeReaders(const VirtualHidConnection& connection);
    void record(HidCall call, const std::string& path, std::string text);
    HidWriteResult writeOutcome(const VirtualHidOpenHandle& handle, std::size_t size);
    std::optional<HidReadResult> readOutcome(VirtualHidOpenHandle& handle, std::vector<std::uint8_t>& buffer);

    void deliverOutput(const std::shared_ptr<VirtualHidConnection>& connection, OutputCall call,
                       std::span<const std::uint8_t> report);
};
