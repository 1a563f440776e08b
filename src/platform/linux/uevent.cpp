#include "platform/linux/uevent.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

namespace {

using namespace std::string_view_literals;

bool isTrusted(const UeventSender& sender) {
    if (sender.group == ueventGroupKernel) {
        return sender.port == 0;
    }
    return sender.group == ueventGroupUdev && sender.userId == 0U;
}

std::uint32_t wordAt(std::string_view message, std::size_t offset) {
    std::uint32_t word = 0;
    std::memcpy(&word, message.data() + offset, sizeof word);
    return word;
}

/// A kernel message is "action@path" and then the properties.
std::string_view kernelProperties(std::string_view message) {
    const std::size_t end = message.find('\0');
    return end == std::string_view::npos ? std::string_view() : message.substr(end + 1);
}

/// A message of udev has a binary head: the mark, a magic number in network order, the head's size, and where the
/// properties lie and how long they are, in the machine's order. What follows in the head are hashes for filters.
std::string_view udevProperties(std::string_view message) {
    constexpr std::string_view mark = "libudev\0\xfe\xed\xca\xfe"sv;
    constexpr std::size_t offsetPosition = 16;
    constexpr std::size_t lengthPosition = 20;
    if (!message.starts_with(mark) || message.size() < lengthPosition + sizeof(std::uint32_t)) {
        return {};
    }
    const std::size_t offset = wordAt(message, offsetPosition);
    const std::size_t length = wordAt(message, lengthPosition);
    return offset > message.size() ? std::string_view() : message.substr(offset, length);
}

/// Empty when there is no such property. Properties are "NAME=value", each ended by a zero byte.
std::string_view property(std::string_view properties, std::string_view name) {
    while (!properties.empty()) {
        const std::string_view line = properties.substr(0, properties.find('\0'));
        if (line.size() > name.size() && line.starts_with(name) && line[name.size()] == '=') {
            return line.substr(name.size() + 1);
        }
        properties.remove_prefix(std::min(line.size() + 1, properties.size()));
    }
    return {};
}

} // namespace

bool isHidNotification(std::string_view message, const UeventSender& sender) {
    if (!isTrusted(sender)) {
        return false;
    }
    const std::string_view properties =
        sender.group == ueventGroupKernel ? kernelProperties(message) : udevProperties(message);
    constexpr std::array actions{"add"sv, "remove"sv, "change"sv, "bind"sv};
    const bool isKnown = std::find(actions.begin(), actions.end(), property(properties, "ACTION")) != actions.end();
    return isKnown && property(properties, "SUBSYSTEM") == "hidraw";
}
