#include "tests/bench/latency_simulator.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <string>

namespace {

constexpr std::uint32_t setClientData = 0xF000003CU;
constexpr std::string_view executePrefix = "MF.SimVars.Set.1 ";
constexpr std::string_view registerPrefix = "MF.Clients.Add.";
constexpr std::string_view subscribePrefix = "MF.SimVars.Add.";

std::uint32_t wordAt(const std::uint8_t* bytes) {
    std::uint32_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

/// A block of the response area with this text.
std::vector<std::uint8_t> responseMessage(const std::string& text) {
    std::vector<std::uint8_t> message(40 + 256);
    const std::array<std::uint32_t, 10> head{40 + 256, 4, 16, 0x1200, 0, 0x1101, 1, 1, 1, 1};
    std::memcpy(message.data(), head.data(), sizeof head);
    std::memcpy(message.data() + 40, text.data(), text.size());
    return message;
}

template <typename Condition>
bool waitFor(Condition condition, std::chrono::seconds limit) {
    const auto end = LatencySimulator::Clock::now() + limit;
    while (!condition()) {
        if (LatencySimulator::Clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

} // namespace

LatencySimulator::LatencySimulator(std::size_t expectedCommands, std::uint32_t controlCount)
    : controls(controlCount), times(expectedCommands), listener(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (listener < 0 || bind(listener, reinterpret_cast<const sockaddr*>(&address), length) != 0 ||
        listen(listener, 1) != 0 || getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        throw std::runtime_error("no port to listen on");
    }
    listeningPort = ntohs(address.sin_port);
    thread = std::thread([this] { serve(); });
}

LatencySimulator::~LatencySimulator() {
    shutdown(listener, SHUT_RDWR);
    if (const int link = openLink.load(); link >= 0) {
        shutdown(link, SHUT_RDWR);
    }
    thread.join();
    close(listener);
}

bool LatencySimulator::waitUntilReady(bool needsRegistration) const {
    return waitFor([&] { return needsRegistration ? registered.load() : connected.load(); }, std::chrono::seconds(20));
}

bool LatencySimulator::waitForAll() const {
    std::size_t last = 0;
    auto lastChange = Clock::now();
    while (count.load() < times.size()) {
        if (count.load() != last) {
            last = count.load();
            lastChange = Clock::now();
        }
        if (Clock::now() - lastChange > std::chrono::seconds(10)) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

void LatencySimulator::serve() {
    const int link = accept(listener, nullptr, nullptr);
    if (link < 0) {
        return;
    }
    const int on = 1;
    setsockopt(link, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    openLink = link;
    connected = true;
    readLink(link);
    openLink = -1;
    close(link);
}

void LatencySimulator::readLink(int link) {
    std::vector<std::uint8_t> buffer(1 << 18);
    std::size_t filled = 0;
    while (true) {
        const ssize_t got = recv(link, buffer.data() + filled, buffer.size() - filled, 0);
        if (got <= 0) {
            return;
        }
        filled += static_cast<std::size_t>(got);
        std::size_t taken = 0;
        while (filled - taken >= 16) {
            const std::size_t size = wordAt(buffer.data() + taken);
            if (size < 16 || filled - taken < size) {
                break;
            }
            handle(link, buffer.data() + taken, size);
            taken += size;
        }
        std::memmove(buffer.data(), buffer.data() + taken, filled - taken);
        filled -= taken;
    }
}

void LatencySimulator::handle(int link, const std::uint8_t* packet, std::size_t size) {
    if (wordAt(packet + 8) != setClientData || size <= 36) {
        return;
    }
    const char* text = reinterpret_cast<const char*>(packet + 36);
    handleCommand(link, {text, strnlen(text, size - 36)});
}

void LatencySimulator::handleCommand(int link, std::string_view text) {
    if (text.starts_with(executePrefix)) {
        const std::size_t number = count.load();
        const auto control = static_cast<std::uint32_t>(std::atoi(text.data() + executePrefix.size()));
        if (number >= times.size() || control != number % controls) {
            ++wrong;
        }
        if (number < times.size()) {
            times[number] = Clock::now();
        }
        count.store(number + 1);
    } else if (text.starts_with(registerPrefix)) {
        const auto message = responseMessage(std::string(text) + ".Finished");
        send(link, message.data(), message.size(), MSG_NOSIGNAL);
    } else if (text.starts_with(subscribePrefix)) {
        registered = true;
    }
}
