#pragma once

#include <cstddef>
#include <cstdint>

// Common to the requests for aircraft variables and for client data.

// How often the client wants the values: the documented numbers.
constexpr std::uint32_t periodNever = 0;
constexpr std::uint32_t periodOnce = 1;
constexpr std::uint32_t lastPeriod = 4;

/// A session's limit for each of the two kinds.
constexpr std::size_t mostRequests = 1000;
