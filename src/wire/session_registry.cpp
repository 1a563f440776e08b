#include "wire/session_registry.h"

#include <utility>

namespace {

std::uintptr_t numberOf(SimConnectHandle handle) {
    return reinterpret_cast<std::uintptr_t>(handle);
}

} // namespace

SimConnectHandle SessionRegistry::add(std::shared_ptr<WireSession> session) {
    const std::lock_guard lock(mutex);
    ++lastHandle;
    sessions.emplace(lastHandle, std::move(session));
    // The interface requires a pointer. It is only a number and is never dereferenced.
    return reinterpret_cast<SimConnectHandle>(lastHandle); // NOLINT(performance-no-int-to-ptr)
}

std::shared_ptr<WireSession> SessionRegistry::find(SimConnectHandle handle) const {
    const std::lock_guard lock(mutex);
    const auto found = sessions.find(numberOf(handle));
    return found == sessions.end() ? nullptr : found->second;
}

std::shared_ptr<WireSession> SessionRegistry::remove(SimConnectHandle handle) {
    const std::lock_guard lock(mutex);
    const auto found = sessions.find(numberOf(handle));
    if (found == sessions.end()) {
        return nullptr;
    }
    std::shared_ptr<WireSession> session = std::move(found->second);
    sessions.erase(found);
    return session;
}

SessionRegistry& openSessions() {
    static SessionRegistry sessions;
    return sessions;
}
