#include "mobiflight/registration_renewal.h"

namespace {

constexpr std::int64_t periodNs = 2'000'000'000;

// Long enough for a module that starts with the simulator, short enough to explain buttons that do nothing.
constexpr std::int64_t patienceNs = 10'000'000'000;

} // namespace

void RegistrationRenewal::begin(std::int64_t now) {
    nextAt = now + periodNs;
    warnAt = now + patienceNs;
    warned = false;
}

bool RegistrationRenewal::takeDue(std::int64_t now) {
    if (!nextAt || now < *nextAt) {
        return false;
    }
    nextAt = now + periodNs;
    return true;
}

bool RegistrationRenewal::takeWarning(std::int64_t now) {
    if (!nextAt || warned || now < warnAt) {
        return false;
    }
    warned = true;
    return true;
}
