#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// The multicast groups of the kernel's device event socket.
constexpr std::uint32_t ueventGroupKernel = 1;
constexpr std::uint32_t ueventGroupUdev = 2;

/// Who sent a device event, according to the socket.
struct UeventSender {
    /// The group that it was sent to; 0 when it was sent to this socket alone.
    std::uint32_t group = 0;
    /// 0 for the kernel itself.
    std::uint32_t port = 0;
    std::optional<std::uint32_t> userId;
};

/// Whether the message says that a hidraw node came, went or became accessible, and comes from a trusted sender: the
/// kernel in its own group, root in udev's. Any process may send to this socket, so `message` may be any bytes.
bool isHidNotification(std::string_view message, const UeventSender& sender);
