#pragma once

#include <cstdint>
#include <optional>

/// Decides when to register again with a module that doesn't answer. Has no thread, clock or lock: the caller
/// synchronises and passes the monotonic clock's nanoseconds.
class RegistrationRenewal {
public:
    /// The session's first registration is made now.
    void begin(std::int64_t now);

    /// Stops waiting for an answer: the module has answered, or the session is over.
    void stop() { nextAt.reset(); }

    /// The module has sent something, so it runs: no warning is due.
    void moduleAnswered() { warned = true; }

    /// When the next registration is due; none while no answer is awaited.
    std::optional<std::int64_t> nextDue() const { return nextAt; }

    /// Whether a registration is due. The next one is then due two seconds from now.
    bool takeDue(std::int64_t now);

    /// Whether it is time to warn that the module is silent; true once for each `begin`.
    bool takeWarning(std::int64_t now);

private:
    std::optional<std::int64_t> nextAt;
    std::int64_t warnAt = 0;
    bool warned = false;
};
