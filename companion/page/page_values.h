#pragma once

// Values in the form in which the pages' modules take them.

#include "hid/hid_protocol.h"

#include <array>
#include <cstdint>
#include <utility>

/// The present time in milliseconds since 1970.
std::int64_t pageTime();

/// The members of a light, for light.js.
std::array<std::pair<const char*, int>, 5> lightMembers(const LedCommand& light);
