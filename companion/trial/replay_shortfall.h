#pragma once

#include "companion/trial/module_link.h"

#include <cstddef>
#include <string>

/// Why not all of a replay has reached the simulator, and how far it came: `played` of `total` reports. Empty if all of
/// them were played and the link is ready at the end. Pure.
std::string replayShortfall(std::size_t played, std::size_t total, bool interrupted, LinkState end);
