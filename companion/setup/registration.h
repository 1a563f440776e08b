#pragma once

#include "companion/draft/line_diff.h"
#include "platform/platform.h"

#include <string>
#include <vector>

/// A file by which a simulator starts add-ons.
struct RegistrationPlace {
    std::string path;
    /// It lists the bridge.
    bool isRegistered = false;

    bool operator==(const RegistrationPlace&) const = default;
};

/// The places of this machine.
std::vector<RegistrationPlace> registrationPlaces(const Host& host);

/// What a registration did to one file.
struct RegistrationChange {
    std::string path;
    std::vector<DiffLine> lines;
};

/// Makes the simulators start the bridge with that configuration, or no longer, and gives what changed; also what had
/// changed before a failure, whose reason is in `error` then.
std::vector<RegistrationChange> registerBridge(const Host& host, const std::string& program,
                                               const std::string& configPath, std::string& error);
std::vector<RegistrationChange> unregisterBridge(const Host& host, std::string& error);
