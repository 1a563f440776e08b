#include "simulation/simulator/client_data_areas.h"

#include "text/ascii.h"

#include <algorithm>

std::vector<std::uint8_t> bytesOf(std::span<const std::uint8_t> block, std::size_t offset, std::size_t size) {
    std::vector<std::uint8_t> part(size);
    if (offset < block.size()) {
        const auto present = block.subspan(offset, std::min(size, block.size() - offset));
        std::copy(present.begin(), present.end(), part.begin());
    }
    return part;
}

AreaCreation ClientDataAreas::create(std::string_view name, std::size_t size, std::uint32_t onlyWriter) {
    if (size == 0 || size > largestArea) {
        return AreaCreation::BadSize;
    }
    if (find(name) != nullptr) {
        return AreaCreation::Exists;
    }
    std::size_t total = size;
    for (const auto& [key, area] : areas) {
        total += area.bytes.size();
    }
    if (total > largestTotal) {
        return AreaCreation::NoRoom;
    }
    areas[lowerCased(name)] = {std::string(name), std::vector<std::uint8_t>(size), onlyWriter};
    return AreaCreation::Created;
}

ClientDataArea* ClientDataAreas::find(std::string_view name) {
    const auto found = areas.find(lowerCased(name));
    return found == areas.end() ? nullptr : &found->second;
}
