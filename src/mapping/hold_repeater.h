#pragma once

#include "mapping/hold_table.h"
#include "mapping/mapping_context.h"
#include "platform/worker.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

/// Repeats the commands of held map buttons at a steady pace on its own thread, the hold worker, bypassing MobiFlight's
/// queue and rate limit. Only `stopHold` or `clear` ends a hold, so it outlives a board that is unplugged with the
/// button down.
class HoldRepeater {
public:
    /// The references must outlive the repeater.
    HoldRepeater(const Host& host, const MappingContext& context);

    /// False with the system's reason in `error` when there is no thread.
    bool start(std::string& error);
    /// Ends the worker; the holds stay in the table.
    void requestStop();
    void join() { worker.join(); }

    /// Forgets all holds.
    void clear();

    // On the event worker.

    /// Starts a hold, or refreshes the texts of one that runs. The first send comes one period later.
    void startHold(const std::string& key, const std::string& controlName, const std::string& role,
                   const std::string& command);

    /// Ends a hold, if there is one. A send that the worker has begun still goes out.
    void stopHold(const std::string& key);

private:
    const Host& host;
    const MappingContext& context;
    Worker worker;

    // Guards `holds`. Only the clock is called under it.
    std::mutex mutex;
    std::condition_variable condition;
    HoldTable holds;

    void run();
    void sendDue(const std::vector<DueHold>& due);
    bool isHeld(const std::string& key);
    std::int64_t periodNs() const;
};
