#pragma once

#include "companion/live/decoded_event.h"
#include "hid/hid_manager.h"
#include "platform/platform.h"
#include "platform/worker.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

/// A connected board.
struct LiveBoard {
    /// As the bridge names it in its log: its identity, else its serial number, else its path.
    std::string name;
    /// Its number in order of connection, from 0. A board that comes back gets a new one. The bridge counts on its own.
    int index = -1;
    /// Its role in the configuration; empty if it has none there.
    std::string configuredRole;
};

/// A report that a board has sent.
struct LiveReport {
    /// When it was read, by the host's monotonic clock in nanoseconds.
    std::int64_t time = 0;
    std::string board;
    int index = -1;
    std::vector<std::uint8_t> bytes;
    /// None: the bridge ignores the report; `problem` says why.
    std::optional<DecodedEvent> event;
    std::string problem;
};

/// Called on one thread, the worker of LiveBoards, one call at a time and with no lock held. Any may be empty. They may
/// block: reports wait meanwhile and none is lost. They must not call `LiveBoards::stop`.
struct LiveObserver {
    /// Precedes the board's first report.
    std::function<void(const LiveBoard& board)> arrived;
    /// Follows the board's last report.
    std::function<void(const LiveBoard& board)> left;
    /// In the order in which the reports were read.
    std::function<void(const LiveReport& report)> reported;
};

/// Follows the boards of a configuration as the bridge would, and says what the bridge would do with each report. Sends
/// the boards nothing. The bridge and other programs may use the same boards meanwhile: each gets every report.
///
/// `start` and `stop` are called on one thread at a time, the other operations on any, also from the observer.
class LiveBoards {
public:
    LiveBoards(const HidTransport& transport, const Host& host);
    /// Stops.
    ~LiveBoards();
    LiveBoards(const LiveBoards&) = delete;
    LiveBoards& operator=(const LiveBoards&) = delete;

    /// Connects the boards that are present, and from then on those that come. False with `error` set if the
    /// configuration's USB ids can't be read or there is no thread; nothing runs then. Needs an object that isn't
    /// running.
    bool start(std::shared_ptr<const BridgeConfiguration> configuration, LiveObserver observer, std::string& error);

    /// Disconnects the boards. Reports that were read before still reach the observer; departures don't. Returns
    /// quickly, and does nothing if it isn't running.
    void stop();

    /// Decodes the reports from now on by another configuration, as while a user edits one. Its USB ids don't matter
    /// until the next start.
    void setConfiguration(std::shared_ptr<const BridgeConfiguration> replacement);

    /// The boards that are connected now, in the order of their paths. May be ahead of the observer.
    std::vector<LiveBoard> boards();

private:
    const Host host;
    HidManager manager;
    Worker worker;

    // Written by `start` before the worker runs; used by the worker alone.
    LiveObserver observer;
    /// The boards whose arrival was announced.
    std::vector<LiveBoard> announced;

    // Guards everything below. Nothing is called under it.
    std::mutex mutex;
    /// Wakes the worker, and ends the scan thread's sleep.
    std::condition_variable changed;
    std::vector<LiveReport> received;
    std::shared_ptr<const BridgeConfiguration> configuration;
    /// No reader adds to `received` any more.
    bool readersEnded = false;

    Host scanHost();
    void wake(bool readersHaveEnded);
    void receive(std::span<const std::uint8_t> bytes, const std::string& board, int index);
    std::shared_ptr<const BridgeConfiguration> currentConfiguration();
    LiveBoard describe(const std::string& name, int index);

    // On the worker.
    void run();
    void waitForReport();
    void waitForReaders();
    void deliver();
    void deliverReports();
    void announce(const std::string& name, int index);
    void announceGone(const std::vector<LiveBoard>& candidates, const std::vector<HidDeviceSummary>& present);
    void decode(LiveReport& report);
};
