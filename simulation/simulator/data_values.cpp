#include "simulation/simulator/data_values.h"

#include "simconnect/simconnect_api.h"

#include <algorithm>

namespace {

constexpr std::size_t tagSize = sizeof(std::uint32_t);

void append(SimConnectWire::Bytes& out, const std::vector<std::uint8_t>& bytes) {
    out.insert(out.end(), bytes.begin(), bytes.end());
}

DataPayload taggedPayload(const DataValues& values, const DataValues& before, bool changedOnly) {
    DataPayload payload;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!changedOnly || i >= before.size() || values[i] != before[i]) {
            SimConnectWire::appendNumber(payload.bytes, values[i].datumId);
            append(payload.bytes, values[i].bytes);
            ++payload.count;
        }
    }
    return payload;
}

SetValues untaggedValues(std::span<const std::uint8_t> block, std::span<const DatumShape> definition) {
    SetValues result;
    for (std::size_t i = 0; i < definition.size(); ++i) {
        if (block.size() < definition[i].size) {
            return {{}, BlockFault::WrongSize};
        }
        result.values.push_back({i, block.first(definition[i].size)});
        block = block.subspan(definition[i].size);
    }
    return block.empty() ? result : SetValues{{}, BlockFault::WrongSize};
}

SetValues taggedValues(std::span<const std::uint8_t> block, std::span<const DatumShape> definition) {
    SetValues result;
    while (!block.empty()) {
        if (block.size() < tagSize) {
            return {{}, BlockFault::WrongSize};
        }
        const auto found = std::ranges::find(definition, SimConnectWire::numberAt(block, 0), &DatumShape::id);
        if (found == definition.end()) {
            return {{}, BlockFault::UnknownDatum};
        }
        block = block.subspan(tagSize);
        if (block.size() < found->size) {
            return {{}, BlockFault::WrongSize};
        }
        result.values.push_back({static_cast<std::size_t>(found - definition.begin()), block.first(found->size)});
        block = block.subspan(found->size);
    }
    return result;
}

} // namespace

DataPayload payloadOf(const DataValues& values, const DataValues& before, std::uint32_t flags) {
    const bool changedOnly = (flags & simConnectRequestFlagChanged) != 0;
    if (changedOnly && values == before) {
        return {};
    }
    if ((flags & requestFlagTagged) != 0) {
        return taggedPayload(values, before, changedOnly);
    }
    DataPayload payload{values.size(), {}};
    for (const DataValue& value : values) {
        append(payload.bytes, value.bytes);
    }
    return payload;
}

SetValues valuesOf(std::span<const std::uint8_t> block, std::span<const DatumShape> definition, bool tagged) {
    return tagged ? taggedValues(block, definition) : untaggedValues(block, definition);
}
