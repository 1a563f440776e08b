#include "wire/socket.h"

#include "wire/deadline.h"

#include <array>
#include <limits>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

#ifdef _WIN32
#include <windows.h>
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#endif

namespace {

using Clock = std::chrono::steady_clock;

// What differs between the systems, under one set of names.
#ifdef _WIN32

using NativeSocket = SOCKET;
using PollEntry = WSAPOLLFD;
constexpr int sendFlags = 0;
constexpr int endSend = SD_SEND;

// Winsock must be started before its first use, and stays until the process ends.
void startSockets() {
    static const bool started = [] {
        WSADATA data;
        return WSAStartup(MAKEWORD(2, 2), &data) == 0;
    }();
    (void)started;
}

int lastError() {
    return WSAGetLastError();
}
bool isWouldBlock(int error) {
    return error == WSAEWOULDBLOCK || error == WSAEINPROGRESS;
}
bool isInterrupted(int /*error*/) {
    return false;
}
void closeNative(NativeSocket socket) {
    closesocket(socket);
}

bool makeNonBlocking(NativeSocket socket) {
    u_long on = 1;
    return ioctlsocket(socket, FIONBIO, &on) == 0;
}

int pollNative(std::span<PollEntry> entries, int limitMs) {
    return WSAPoll(entries.data(), static_cast<ULONG>(entries.size()), limitMs);
}

using BufferLength = int;

#else

using NativeSocket = int;
using PollEntry = pollfd;
constexpr int sendFlags = MSG_NOSIGNAL;
constexpr int endSend = SHUT_WR;

void startSockets() {}
int lastError() {
    return errno;
}
bool isWouldBlock(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EINPROGRESS;
}
bool isInterrupted(int error) {
    return error == EINTR;
}
void closeNative(NativeSocket socket) {
    ::close(socket);
}

bool makeNonBlocking(NativeSocket socket) {
    return fcntl(socket, F_SETFL, O_NONBLOCK) == 0 && fcntl(socket, F_SETFD, FD_CLOEXEC) == 0;
}

int pollNative(std::span<PollEntry> entries, int limitMs) {
    return poll(entries.data(), entries.size(), limitMs);
}

using BufferLength = std::size_t;

#endif

NativeSocket nativeOf(std::intptr_t number) {
    return static_cast<NativeSocket>(number);
}

std::string errorText(int error) {
    return std::system_category().message(error);
}

bool setOption(std::intptr_t socket, int level, int name, int value) {
    return setsockopt(nativeOf(socket), level, name, reinterpret_cast<const char*>(&value), sizeof(value)) == 0;
}

// Else a listener can't come back to its port for a minute after its connections ended. Windows lets it come back
// anyway, and by the option's name means that others may take the port too.
void allowReturnToPort([[maybe_unused]] std::intptr_t socket) {
#ifndef _WIN32
    setOption(socket, SOL_SOCKET, SO_REUSEADDR, 1);
#endif
}

// Each of the messages is small and shall leave at once.
void disableDelay(std::intptr_t socket) {
    setOption(socket, IPPROTO_TCP, TCP_NODELAY, 1);
}

Socket makeSocket(int family, int type) {
    startSockets();
    const NativeSocket native = ::socket(family, type, 0);
    Socket made(static_cast<std::intptr_t>(native));
    if (made.valid() && !makeNonBlocking(native)) {
        made.close();
    }
    return made;
}

sockaddr_in loopbackAddress(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

bool bindToLoopback(const Socket& socket, std::uint16_t port) {
    const sockaddr_in address = loopbackAddress(port);
    return bind(nativeOf(socket.number()), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

// Transfers are told to the system in int on Windows; longer ones are done in pieces anyway.
template <typename Byte>
std::span<Byte> firstPiece(std::span<Byte> bytes) {
    constexpr std::size_t most = std::numeric_limits<int>::max();
    return bytes.first(bytes.size() < most ? bytes.size() : most);
}

// The outcome of a transfer of at least one byte, of which 0 are reported when the peer has ended.
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
        const int error = lastError();
        if (!isInterrupted(error)) {
            return {isWouldBlock(error) ? TransferStatus::WouldBlock : TransferStatus::Failed, 0};
        }
    }
}

// Waits for the end of a connection attempt; true when it succeeded.
#ifdef _WIN32
bool finishConnect(const Socket& socket, Clock::time_point deadline) {
    // WSAPoll keeps silent about a refused connection on older systems; select tells it among the exceptions.
    fd_set written;
    fd_set failed;
    FD_ZERO(&written);
    FD_ZERO(&failed);
    FD_SET(nativeOf(socket.number()), &written);
    FD_SET(nativeOf(socket.number()), &failed);
    const int left = millisecondsLeft(deadline);
    timeval limit{left / 1000, (left % 1000) * 1000};
    select(0, nullptr, &written, &failed, &limit);
    return FD_ISSET(nativeOf(socket.number()), &written) != 0;
}
#else
bool finishConnect(const Socket& socket, Clock::time_point deadline) {
    std::array<PollEntry, 1> entry{{{nativeOf(socket.number()), POLLOUT, 0}}};
    int count = 0;
    do {
        count = pollNative(entry, millisecondsLeft(deadline));
    } while (count < 0 && isInterrupted(lastError()));
    int error = 0;
    socklen_t size = sizeof(error);
    return count > 0 && getsockopt(nativeOf(socket.number()), SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0;
}
#endif

Socket connectTo(const addrinfo& address, Clock::time_point deadline) {
    Socket socket = makeSocket(address.ai_family, SOCK_STREAM);
    if (!socket.valid()) {
        return {};
    }
    disableDelay(socket.number());
    if (connect(nativeOf(socket.number()), address.ai_addr, static_cast<socklen_t>(address.ai_addrlen)) == 0 ||
        (isWouldBlock(lastError()) && finishConnect(socket, deadline))) {
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

std::string folderOf(const std::string& path) {
    const std::size_t separator = path.find_last_of("/\\");
    return separator == std::string::npos ? std::string() : path.substr(0, separator);
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
    const auto piece = firstPiece(bytes);
    return transfer([&] {
        return ::send(nativeOf(native), reinterpret_cast<const char*>(piece.data()),
                      static_cast<BufferLength>(piece.size()), sendFlags);
    });
}

Transfer Socket::receive(std::span<std::uint8_t> bytes) const {
    const auto piece = firstPiece(bytes);
    return transfer([&] {
        return recv(nativeOf(native), reinterpret_cast<char*>(piece.data()), static_cast<BufferLength>(piece.size()),
                    0);
    });
}

void Socket::awaitData(std::chrono::milliseconds limit) const {
    const std::array<SocketInterest, 1> interest{{{native, true, false}}};
    waitForSockets(interest, limit);
}

bool Socket::endSending() const {
    shutdown(nativeOf(native), endSend);
    return true;
}

void Socket::close() {
    if (valid()) {
        closeNative(nativeOf(std::exchange(native, none)));
    }
}

void Socket::reset() {
    linger atOnce{};
    atOnce.l_onoff = 1;
    atOnce.l_linger = 0;
    setsockopt(nativeOf(native), SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&atOnce), sizeof(atOnce));
    close();
}

void Socket::setSendBuffer(int bytes) const {
    setOption(native, SOL_SOCKET, SO_SNDBUF, bytes);
}

std::uint16_t Socket::localPort() const {
    sockaddr_in address{};
    socklen_t size = sizeof(address);
    if (getsockname(nativeOf(native), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        return 0;
    }
    return ntohs(address.sin_port);
}

Socket Socket::accept() const {
    const NativeSocket accepted = ::accept(nativeOf(native), nullptr, nullptr);
    Socket socket(static_cast<std::intptr_t>(accepted));
    if (socket.valid() && !makeNonBlocking(accepted)) {
        return {};
    }
    disableDelay(socket.number());
    return socket;
}

Socket connectSocket(const std::string& host, std::uint16_t port, AddressFamily family,
                     std::chrono::milliseconds limit) {
    startSockets();
    addrinfo wanted{};
    wanted.ai_family = nativeFamily(family);
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (getaddrinfo(host.c_str(), std::to_string(port).c_str(), &wanted, &found) != 0) {
        return {};
    }
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> addresses(found, &freeaddrinfo);
    const Clock::time_point deadline = Clock::now() + limit;
    for (const addrinfo* address = addresses.get(); address != nullptr; address = address->ai_next) {
        Socket socket = connectTo(*address, deadline);
        if (socket.valid()) {
            return socket;
        }
    }
    return {};
}

Socket listenOnLoopback(std::uint16_t port, int receiveBuffer, std::string& error) {
    Socket socket = makeSocket(AF_INET, SOCK_STREAM);
    if (socket.valid()) {
        allowReturnToPort(socket.number());
        if (receiveBuffer > 0) {
            // Accepted sockets inherit it; set later it would come after the window was told to the peer.
            setOption(socket.number(), SOL_SOCKET, SO_RCVBUF, receiveBuffer);
        }
        if (bindToLoopback(socket, port) && listen(nativeOf(socket.number()), SOMAXCONN) == 0) {
            return socket;
        }
    }
    error = "Failed to listen on port " + std::to_string(port) + ": " + errorText(lastError());
    return {};
}

Socket makeWakeSocket() {
    Socket socket = makeSocket(AF_INET, SOCK_DGRAM);
    if (!socket.valid() || !bindToLoopback(socket, 0)) {
        return {};
    }
    const sockaddr_in own = loopbackAddress(socket.localPort());
    if (connect(nativeOf(socket.number()), reinterpret_cast<const sockaddr*>(&own), sizeof(own)) != 0) {
        return {};
    }
    return socket;
}

void waitForSockets(std::span<const SocketInterest> sockets, std::chrono::milliseconds limit) {
    std::vector<PollEntry> entries;
    entries.reserve(sockets.size());
    for (const SocketInterest& interest : sockets) {
        const int events = (interest.read ? POLLIN : 0) | (interest.write ? POLLOUT : 0);
        entries.push_back({nativeOf(interest.socket), static_cast<short>(events), 0});
    }
    pollNative(entries, static_cast<int>(limit.count()));
}

#ifdef _WIN32

std::string executableFolder() {
    std::array<char, 32768> path{};
    const DWORD length = GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return folderOf(std::string(path.data(), length));
}

std::string homeFolder() {
    std::array<char, 32768> path{};
    const DWORD length = GetEnvironmentVariableA("USERPROFILE", path.data(), static_cast<DWORD>(path.size()));
    return std::string(path.data(), length < path.size() ? length : 0);
}

#else

std::string executableFolder() {
    std::array<char, 4096> path{};
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    return length > 0 ? folderOf(std::string(path.data(), static_cast<std::size_t>(length))) : std::string();
}

std::string homeFolder() {
    // Nothing in the program writes the environment.
    const char* home = std::getenv("HOME"); // NOLINT(concurrency-mt-unsafe)
    return home == nullptr ? std::string() : std::string(home);
}

#endif
