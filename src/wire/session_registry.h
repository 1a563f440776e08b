#pragma once

#include "simconnect/simconnect_api.h"
#include "wire/wire_session.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>

/// The open sessions by handle. No number is given twice, so a call on a closed handle finds nothing. A call under way
/// keeps the session that it found. Any thread may call any member.
class SessionRegistry {
public:
    /// Returns the session's handle, which is never null.
    SimConnectHandle add(std::shared_ptr<WireSession> session);
    /// Null: no such handle.
    std::shared_ptr<WireSession> find(SimConnectHandle handle) const;
    /// Forgets the handle and returns its session, which is the caller's to close. Null: no such handle.
    std::shared_ptr<WireSession> remove(SimConnectHandle handle);

private:
    /// Guards the members below.
    mutable std::mutex mutex;
    std::unordered_map<std::uintptr_t, std::shared_ptr<WireSession>> sessions;
    std::uintptr_t lastHandle = 0;
};

/// The process's sessions. The C interface has only handles to free functions, so its sessions are global.
SessionRegistry& openSessions();
