#pragma once

#include "simulation/boards/virtual_board.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <tuple>
#include <vector>

/// Handles buttons as the firmware does: a press report at once, hold reports while the button is down, a release
/// report. Has a thread of its own. All operations may be called from any thread.
class HeldButtons {
public:
    /// How long a button is down before its first hold report, and the time between two: long enough that a short press
    /// isn't a hold, and slow enough that a person can read a changing value.
    static constexpr std::chrono::milliseconds firstHold{500};
    static constexpr std::chrono::milliseconds holdPeriod{100};

    /// A button of a board, which must exist until the button is released.
    struct Button {
        VirtualBoard* board = nullptr;
        std::uint16_t controlId = 0;
        std::uint8_t mode = 0;

        bool operator<(const Button& other) const {
            return std::tie(board, controlId, mode) < std::tie(other.board, other.controlId, other.mode);
        }
    };

    /// Called with each report, "press", "hold" or "release", in order. Must not call back.
    using ReportCallback = std::function<void(const Button& button, std::string_view report)>;

    explicit HeldButtons(ReportCallback onReport);
    /// Releases all buttons.
    ~HeldButtons();
    HeldButtons(const HeldButtons&) = delete;
    HeldButtons& operator=(const HeldButtons&) = delete;

    /// Who may press buttons, by name. One who was added twice has to be removed twice.
    void addHolder(const std::string& holder);
    /// Releases what the holder has pressed.
    void removeHolder(const std::string& holder);
    /// Does nothing for a button that is already down. False with the reason in `error` if the holder isn't there:
    /// nobody would release the button. A holder without a name always is, and sees to the release itself.
    bool press(const Button& button, const std::string& holder, std::string& error);
    /// Does nothing for a button that isn't down.
    void release(const Button& button);
    void releaseAll();
    void releaseAllOn(const VirtualBoard& board);
    /// The controls of a board that are down.
    std::vector<std::uint16_t> heldOn(const VirtualBoard& board) const;

private:
    using Clock = std::chrono::steady_clock;

    struct Press {
        std::string holder;
        Clock::time_point nextHold;
    };

    const ReportCallback onReport;
    // Guards the buttons, their holders and `ending`, and keeps the reports of one button in order.
    mutable std::mutex mutex;
    std::condition_variable changed;
    std::map<Button, Press> down;
    std::multiset<std::string> holders;
    bool ending = false;
    std::thread thread;

    void repeat();
    // These need the mutex held.
    template <typename Chosen>
    void releaseThose(Chosen chosen);
    void sendPress(const Button& button) const;
    void sendHold(const Button& button) const;
    void sendRelease(const Button& button) const;
};
