#pragma once

#include "simconnect/simconnect_api.h"
#include "wire/wire_session.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>

/// The open sessions by handle. A handle is a number that is given once and never again, so that a call on a closed one
/// finds nothing, and a call under way keeps the session that it found.
class SessionRegistry {
public:
    SimConnectHandle add(std::shared_ptr<WireSession> session);
    /// Null: no such handle.
    std::shared_ptr<WireSession> find(SimConnectHandle handle) const;
    std::shared_ptr<WireSession> remove(SimConnectHandle handle);

private:
    mutable std::mutex mutex;
    std::unordered_map<std::uintptr_t, std::shared_ptr<WireSession>> sessions;
    std::uintptr_t lastHandle = 0;
};
