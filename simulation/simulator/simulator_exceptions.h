#pragma once

#include <cstdint>

/// The codes of SIMCONNECT_RECV_EXCEPTION that the virtual simulator gives.
namespace SimulatorExceptions {

constexpr std::uint32_t error = 1;
constexpr std::uint32_t sizeMismatch = 2;
constexpr std::uint32_t unrecognizedId = 3;
constexpr std::uint32_t unopened = 4;
constexpr std::uint32_t versionMismatch = 5;
constexpr std::uint32_t tooManyGroups = 6;
constexpr std::uint32_t nameUnrecognized = 7;
constexpr std::uint32_t tooManyEventNames = 8;
constexpr std::uint32_t eventIdDuplicate = 9;
constexpr std::uint32_t tooManyRequests = 12;
constexpr std::uint32_t invalidDataType = 18;
constexpr std::uint32_t invalidDataSize = 19;
constexpr std::uint32_t invalidArray = 21;
constexpr std::uint32_t illegalOperation = 25;
constexpr std::uint32_t invalidEnum = 27;
constexpr std::uint32_t duplicateId = 29;
constexpr std::uint32_t datumId = 30;
constexpr std::uint32_t outOfBounds = 31;
constexpr std::uint32_t alreadyCreated = 32;

} // namespace SimulatorExceptions
