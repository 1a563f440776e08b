#include "wire/socket.h"

#include "native_socket.h"

#include <array>
#include <memory>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

NativeSocket::Handle handleOf(std::intptr_t native) {
    return static_cast<NativeSocket::Handle>(native);
}

// Makes a transfer of at least one byte by `call`, which returns the system's count.
template <typename Call>
Transfer transfer(const Call& call) {
    for (;;) {
        const auto count = call();
        if (count > 0) {
            return {TransferStatus::Done, static_cast<std::size_t>(count)};
        }
        if (count == 0) {
            return {TransferStatus::Ended, 0};
        }
        const int error = NativeSocket::lastError();
        if (!NativeSocket::isInterrupted(error)) {
            return {NativeSocket::isWouldBlock(error) ? TransferStatus::WouldBlock : TransferStatus::Failed, 0};
        }
    }
}

Socket connectTo(const addrinfo& address, Clock::time_point deadline) {
    const NativeSocket::Handle handle = NativeSocket::open(address.ai_family, SOCK_STREAM);
    Socket socket(static_cast<std::intptr_t>(handle));
    if (!socket.valid()) {
        return {};
    }
    NativeSocket::disableDelay(handle);
    if (connect(handle, address.ai_addr, static_cast<socklen_t>(address.ai_addrlen)) == 0 ||
        (NativeSocket::isWouldBlock(NativeSocket::lastError()) && NativeSocket::finishConnect(handle, deadline))) {
        return socket;
    }
    return {};
}

int nativeFamily(AddressFamily family) {
    switch (family) {
    case AddressFamily::Ipv4:
        return AF_INET;
    case AddressFamily::Ipv6:
        return AF_INET6;
    case AddressFamily::Any:
        break;
    }
    return AF_UNSPEC;
}

using Addresses = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

// Null when the host is unknown.
Addresses lookUp(const std::string& host, std::uint16_t port, AddressFamily family) {
    NativeSocket::start();
    addrinfo wanted{};
    wanted.ai_family = nativeFamily(family);
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int failure = getaddrinfo(host.c_str(), std::to_string(port).c_str(), &wanted, &found);
    return {failure == 0 ? found : nullptr, &freeaddrinfo};
}

} // namespace

Socket::Socket(Socket&& other) noexcept : native(std::exchange(other.native, none)) {}

Socket& Socket::operator=(Socket&& other) noexcept {
    if (this != &other) {
        close();
        native = std::exchange(other.native, none);
    }
    return *this;
}

Transfer Socket::send(std::span<const std::uint8_t> bytes) const {
    return transfer([&] {
        return ::send(handleOf(native), reinterpret_cast<const char*>(bytes.data()),
                      NativeSocket::transferSize(bytes.size()), NativeSocket::sendFlags);
    });
}

Transfer Socket::receive(std::span<std::uint8_t> bytes) const {
    return transfer([&] {
        return recv(handleOf(native), reinterpret_cast<char*>(bytes.data()), NativeSocket::transferSize(bytes.size()),
                    0);
    });
}

void Socket::awaitData(std::chrono::milliseconds limit) const {
    std::array<NativeSocket::PollEntry, 1> entry{{{handleOf(native), POLLIN, 0}}};
    NativeSocket::poll(entry, static_cast<int>(limit.count()));
}

bool Socket::endSending() const {
    shutdown(handleOf(native), NativeSocket::endOfSending);
    return true;
}

void Socket::close() {
    if (valid()) {
        NativeSocket::close(handleOf(std::exchange(native, none)));
    }
}

Socket connectSocket(const std::string& host, std::uint16_t port, AddressFamily family,
                     std::chrono::milliseconds limit) {
    const Addresses addresses = lookUp(host, port, family);
    const Clock::time_point deadline = Clock::now() + limit;
    for (const addrinfo* address = addresses.get(); address != nullptr; address = address->ai_next) {
        Socket socket = connectTo(*address, deadline);
        if (socket.valid()) {
            return socket;
        }
    }
    return {};
}
