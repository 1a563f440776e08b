#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

/// A map button that is held down. Times are the monotonic clock's nanoseconds.
struct ManagedMapHold {
    // As the event named them, kept for debugging; nothing reads them back.
    std::string controlName;
    std::string role;
    /// The RPN text to send each period.
    std::string command;
    /// When the next send is due; 0 until it is set.
    std::int64_t nextDue = 0;
};

/// A hold whose time has come.
struct DueHold {
    std::string key;
    std::string command;
};

/// The key of a held button. The same button on two boards, or on one board in another mode, has two keys.
std::string holdKey(const std::string& deviceName, int index, std::uint16_t controlId, const std::string& role);

/// The period in nanoseconds for the configured milliseconds; 10 ms for a value below 1.
std::int64_t holdPeriodNs(std::int32_t configuredMs);

/// The held map buttons by key. Time is an argument in nanoseconds. Has no lock of its own.
class HoldTable {
public:
    /// Enters a hold, whose first send is due one period from `now`. For a key that is there already only the texts are
    /// replaced: the board repeats its hold reports at its own pace, which must not postpone the next send.
    void start(const std::string& key, const std::string& controlName, const std::string& role,
               const std::string& command, std::int64_t now, std::int64_t period);

    void stop(const std::string& key) { holds.erase(key); }
    void clear() { holds.clear(); }

    bool empty() const { return holds.empty(); }
    bool contains(const std::string& key) const { return holds.contains(key); }

    /// The holds that are due at `now`, in the table's order. Each is due again one period from `now`: a late caller
    /// doesn't catch up on what it missed.
    std::vector<DueHold> takeDue(std::int64_t now, std::int64_t period);

private:
    std::unordered_map<std::string, ManagedMapHold> holds;
};
