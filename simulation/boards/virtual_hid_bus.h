#pragma once

#include "platform/platform.h"
#include "simulation/boards/virtual_board.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

struct HidOpenKind {
    HidAccess access = HidAccess::ReadWrite;
    HidMode mode = HidMode::Synchronous;

    bool operator==(const HidOpenKind&) const = default;
};

/// The faults between one board and the host; none by default.
struct HidLinkFaults {
    std::vector<HidOpenKind> refusedOpens{};
    bool attributesFail = false;
    bool serialFails = false;
    /// Ids of feature reports whose reading fails.
    std::set<std::uint8_t> failingFeatures{};
    /// Replies by the id asked for, instead of the board's own.
    std::map<std::uint8_t, HidProtocol::Report> featureReplies{};
    /// Reads fail, a pending one at once.
    bool readsFail = false;
    /// The transport takes byte 0 from each input report: a read of a whole report gives 31 bytes.
    bool readsLackReportId = false;
    /// The error code of `write`; 0 lets it succeed.
    std::uint32_t writeError = 0;
    /// The error code of `setOutputReport`; 0 lets it succeed.
    std::uint32_t setOutputReportError = 0;
    /// A successful `write` carries and reports no more bytes than this.
    std::optional<std::uint32_t> writeCount{};
};

enum class HidCall {
    Enumerate,
    Open,
    Close,
    Attributes,
    SerialNumber,
    GetFeature,
    MakeReader,
    CancelReads,
    Write,
    SetOutputReport,
    Read,
};

/// One call that the host made.
struct HidCallRecord {
    HidCall call = HidCall::Enumerate;
    /// Empty for `Enumerate`, and for a handle that isn't open.
    std::string path;
    /// The call in full, such as "open port#0001 read-write overlapped: ok".
    std::string text;
};

/// A USB bus of virtual boards, seen by the host as a HidTransport. Each plugging gives a path of its own, so a board
/// that is pulled and put back is a new connection, unless it is replugged under its old path. An input report goes to
/// the queue of each overlapped handle that is open on its board, and is dropped when there is none or the queue has 64
/// reports, as in the kernel. A board that receives the BOOTSEL command leaves the bus.
///
/// All operations may be called from any thread. The transport may outlive the bus.
class VirtualHidBus {
public:
    VirtualHidBus();
    VirtualHidBus(const VirtualHidBus&) = delete;
    VirtualHidBus& operator=(const VirtualHidBus&) = delete;
    ~VirtualHidBus();

    HidTransport transport() const;

    /// Connects a board; one that is already plugged is pulled first. Returns its path: `port`, which decides where the
    /// path sorts, and a running number.
    std::string plug(const std::shared_ptr<VirtualBoard>& board, std::string_view port = "port");

    /// Pulls a plugged board and connects it again at once under the same path, as Windows does: no enumeration misses
    /// it, but all handles that were open on it are dead. Does nothing to a board that isn't plugged.
    void replug(const std::shared_ptr<VirtualBoard>& board);

    /// Pulls a board, if it is plugged. Reads pending on it end with a failure once their queue is empty.
    void unplug(const std::shared_ptr<VirtualBoard>& board);

    /// Applies from now on, also across plugging and pulling.
    void setFaults(const std::shared_ptr<VirtualBoard>& board, const HidLinkFaults& faults);

    /// Empty when the board isn't plugged.
    std::string pathOf(const std::shared_ptr<VirtualBoard>& board) const;

    std::size_t openHandleCount() const;

    /// Reads that are waiting for a report of this board.
    std::size_t pendingReadCount(const std::shared_ptr<VirtualBoard>& board) const;

    /// Calls against the transport's contract: on a handle that isn't open, a write on an overlapped one, a reader on a
    /// synchronous one.
    std::uint64_t misuseCount() const;

    /// All calls in order, except reads, whose order depends on the threads that make them.
    std::vector<HidCallRecord> calls() const;
    /// The texts of `calls`.
    std::vector<std::string> callTexts() const;
    /// The reads that have ended with data or a failure.
    std::vector<HidCallRecord> reads() const;
    void clearCalls();
    /// On by default. A long run turns it off, because the record would grow without limit.
    void setRecording(bool enabled);

private:
    struct State;
    std::shared_ptr<State> state;
};
