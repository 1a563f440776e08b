#pragma once

#include <cstdint>
#include <optional>

/// When to register again with a module that does not answer. Has no clock and no thread: times are the monotonic
/// clock's nanoseconds, given by the caller. Not synchronised.
class RegistrationRenewal {
public:
    /// The session's first registration is made now.
    void begin(std::int64_t now);

    /// There is nothing to wait for any more: the module has answered, or the session is over.
    void stop() { nextAt.reset(); }

    /// The module runs, whatever it said: no warning is due.
    void moduleHeard() { warned = true; }

    /// When the next registration is due; none while nothing is waited for.
    std::optional<std::int64_t> nextDue() const { return nextAt; }

    /// Whether a registration is due. The next one is then due two seconds from now.
    bool takeDue(std::int64_t now);

    /// Whether it is time to warn, once for each `begin`, that nothing has been heard.
    bool takeWarning(std::int64_t now);

private:
    std::optional<std::int64_t> nextAt;
    std::int64_t warnAt = 0;
    bool warned = false;
};
