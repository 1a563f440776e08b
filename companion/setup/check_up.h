#pragma once

#include "platform/platform.h"

#include <mutex>
#include <string>

/// The check-up of this machine, with the configuration as it is saved. Any thread.
class CheckUp {
public:
    CheckUp(const Platform& platform, std::string configPath);

    /// Looks now, and gives the answers as a JSON array. May take seconds.
    std::string look();

private:
    const Platform platform;
    const std::string configPath;

    // Held while looking: two at a time would write and remove the same test file.
    std::mutex mutex;
};
