#pragma once

// The values of a definition's data, as they travel in messages and requests: in the definition's order, or tagged,
// each behind the id that the client gave it.

#include "wire/requests.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

/// A request for data with this flag gets tagged values.
constexpr std::uint32_t requestFlagTagged = 2;
/// Data that are set with this flag are tagged.
constexpr std::uint32_t setFlagTagged = 1;

struct DataValue {
    std::uint32_t datumId = 0;
    std::vector<std::uint8_t> bytes;

    bool operator==(const DataValue&) const = default;
};
using DataValues = std::vector<DataValue>;

struct DataPayload {
    /// How many values the bytes hold; 0: nothing is to be sent.
    std::size_t count = 0;
    SimConnectWire::Bytes bytes;
};

/// What a request's flags let through of the values, compared with those before. No values before: all are new.
DataPayload payloadOf(const DataValues& values, const DataValues& before, std::uint32_t flags);

/// A datum of a definition.
struct DatumShape {
    std::uint32_t id = 0;
    std::size_t size = 0;
};

/// A value that a client sets: the datum by its place in the definition, and a view of its bytes.
struct SetValue {
    std::size_t datum = 0;
    std::span<const std::uint8_t> bytes;
};

/// Why a block can't be read.
enum class BlockFault { WrongSize, UnknownDatum };

struct SetValues {
    std::vector<SetValue> values;
    std::optional<BlockFault> fault;
};

/// Reads the block of a request that sets data. Untagged, it holds every datum, tagged any of them.
SetValues valuesOf(std::span<const std::uint8_t> block, std::span<const DatumShape> definition, bool tagged);
