#include "platform/crash_line.h"

#include <algorithm>
#include <array>

namespace {

class CrashText {
public:
    explicit CrashText(std::span<char> room) : room(room) {}

    CrashText& add(std::string_view text) {
        const std::size_t count = std::min(text.size(), room.size() - used);
        std::copy_n(text.begin(), count, room.begin() + static_cast<std::ptrdiff_t>(used));
        used += count;
        return *this;
    }

    CrashText& addHex(std::uint64_t number) {
        std::array<char, 16> digits{};
        std::size_t first = digits.size();
        do {
            digits[--first] = "0123456789ABCDEF"[number % 16];
            number /= 16;
        } while (number != 0);
        return add("0x").add({digits.data() + first, digits.size() - first});
    }

    std::size_t size() const { return used; }

private:
    std::span<char> room;
    std::size_t used = 0;
};

} // namespace

std::size_t writeCrashLine(const CrashFacts& facts, std::span<char> buffer) {
    CrashText line(buffer);
    line.add(facts.program).add(" ").add(facts.version).add(" crashed: ");
    line.add(facts.kind).add(" ").addHex(facts.code).add(" at ");
    const std::uint64_t offset = facts.address - facts.programStart;
    if (facts.address >= facts.programStart && offset < facts.programSize) {
        line.add(facts.program).add("+").addHex(offset);
    } else {
        line.addHex(facts.address).add(", outside the program");
    }
    return line.add("\n").size();
}
