#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A named block of bytes that clients share. Lives until the simulator ends, even after its creator has left.
struct ClientDataArea {
    /// As its creator wrote it.
    std::string name;
    std::vector<std::uint8_t> bytes;
    /// Only this session may write; 0: every session may.
    std::uint32_t onlyWriter = 0;
};

/// An area that `session` has written (0: the simulator itself), and the bytes that it held before.
using AreaListener =
    std::function<void(const ClientDataArea& area, std::span<const std::uint8_t> before, std::uint32_t session)>;

enum class AreaCreation { Created, Exists, BadSize, NoRoom };

/// All client data areas, by names whose case doesn't matter.
class ClientDataAreas {
public:
    AreaCreation create(std::string_view name, std::size_t size, std::uint32_t onlyWriter = 0);
    /// Null: no client has created it. Valid until `clear`.
    ClientDataArea* find(std::string_view name);
    void clear() { areas.clear(); }

    /// Calls `change` to fill the area's bytes, then the listener. False: there is no such area.
    template <typename Change>
    bool write(std::string_view name, const Change& change, std::uint32_t session = 0) {
        ClientDataArea* const area = find(name);
        if (area == nullptr) {
            return false;
        }
        const std::vector<std::uint8_t> before = area->bytes;
        change(std::span(area->bytes));
        if (listener) {
            listener(*area, before, session);
        }
        return true;
    }
    /// Called after each write, also one that left the bytes as they were. May write and create, but not clear.
    void setListener(AreaListener listener) { this->listener = std::move(listener); }

    /// One area at most, and all together.
    static constexpr std::size_t largestArea = 8192;
    static constexpr std::size_t largestTotal = 1024UL * 1024UL;

private:
    std::map<std::string, ClientDataArea> areas;
    AreaListener listener;
};

/// The part of a block of memory from `offset` on, zeros where the block ends before it.
std::vector<std::uint8_t> bytesOf(std::span<const std::uint8_t> block, std::size_t offset, std::size_t size);
