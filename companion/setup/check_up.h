#pragma once

#include "companion/doctor/check_result.h"
#include "companion/doctor/machine.h"

#include <mutex>
#include <string>

/// The check-up of this machine, with the configuration as it is saved. Any thread.
class CheckUp {
public:
    CheckUp(Machine machine, std::string configPath);

    /// Looks now, and gives the answers as a JSON array. May take seconds.
    std::string look();

    /// Looks again, and writes the file or makes the folder if the answer of this code and title still offers what the
    /// user has agreed to, a repair as the JSON shows it. False with the reason in `error`; nothing has changed then.
    bool repair(const std::string& code, const std::string& title, const Repair& agreed, std::string& error);

private:
    const Machine machine;
    const std::string configPath;

    // Held while looking: two at a time would write and remove the same test file.
    std::mutex mutex;
};
