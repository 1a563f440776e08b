#include "platform/linux/file_descriptor.h"
#include "platform/linux/uevent.h"
#include "platform/linux/wake_event.h"
#include "platform/system_parts.h"

#include <linux/netlink.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>

namespace {

enum class Reception { HidChange, Nothing, Broken };

/// The kernel's device events. The kernel reports a node first; udev reports it again when its rules have run, and only
/// then is the node accessible to its users.
class UeventListener {
public:
    bool setUp(std::string& error);
    void run(const std::function<void()>& onChange);
    void tearDown() { events = FileDescriptor(); }
    void requestEnd() const { end.signal(); }

private:
    FileDescriptor events;
    // `tearDown` keeps it, since another thread may call `requestEnd` after listening has ended by itself.
    WakeEvent end;

    Reception receive() const;
};

std::optional<std::uint32_t> senderUserId(const msghdr& header) {
    const cmsghdr* control = CMSG_FIRSTHDR(&header);
    if (control == nullptr || control->cmsg_level != SOL_SOCKET || control->cmsg_type != SCM_CREDENTIALS) {
        return std::nullopt;
    }
    ucred credentials{};
    std::memcpy(&credentials, CMSG_DATA(control), sizeof credentials);
    return credentials.uid;
}

bool UeventListener::setUp(std::string& error) {
    FileDescriptor opened(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_KOBJECT_UEVENT));
    if (!opened.isOpen() || !end.open()) {
        error = "Failed to create device event socket";
        return false;
    }
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = ueventGroupKernel | ueventGroupUdev;
    const int passCredentials = 1;
    if (setsockopt(opened.get(), SOL_SOCKET, SO_PASSCRED, &passCredentials, sizeof passCredentials) != 0 ||
        bind(opened.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        error = "Failed to listen to device events";
        return false;
    }
    events = std::move(opened);
    return true;
}

void UeventListener::run(const std::function<void()>& onChange) {
    while (true) {
        std::array<pollfd, 2> waited{{{end.pollable(), POLLIN, 0}, {events.get(), POLLIN, 0}}};
        if (uninterrupted([&] { return poll(waited.data(), waited.size(), -1); }) < 0 || waited[0].revents != 0) {
            return;
        }
        const Reception reception = receive();
        if (reception == Reception::Broken) {
            return;
        }
        if (reception == Reception::HidChange) {
            onChange();
        }
    }
}

Reception UeventListener::receive() const {
    // The longest messages are udev's, which fit in this.
    std::array<char, 8192> message{};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(ucred))> control{};
    sockaddr_nl address{};
    iovec data{message.data(), message.size()};
    msghdr header{};
    header.msg_name = &address;
    header.msg_namelen = sizeof address;
    header.msg_iov = &data;
    header.msg_iovlen = 1;
    header.msg_control = control.data();
    header.msg_controllen = control.size();
    const auto size = uninterrupted([&] { return recvmsg(events.get(), &header, 0); });
    if (size < 0) {
        // ENOBUFS: the socket's buffer overflowed, so a HID event may be lost. A needless scan costs little.
        return errno == ENOBUFS ? Reception::HidChange : errno == EAGAIN ? Reception::Nothing : Reception::Broken;
    }
    const UeventSender sender{address.nl_groups, address.nl_pid, senderUserId(header)};
    const bool isHidChange = isHidNotification({message.data(), static_cast<std::size_t>(size)}, sender);
    return isHidChange ? Reception::HidChange : Reception::Nothing;
}

} // namespace

DeviceNotificationSource systemDeviceNotifications() {
    const auto listener = std::make_shared<UeventListener>();
    DeviceNotificationSource source;
    source.setUp = [listener](std::string& error) { return listener->setUp(error); };
    source.run = [listener](const std::function<void()>& onChange) { listener->run(onChange); };
    source.tearDown = [listener] { listener->tearDown(); };
    source.requestEnd = [listener] { listener->requestEnd(); };
    return source;
}
