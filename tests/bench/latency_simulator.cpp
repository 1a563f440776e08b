#include "tests/bench/latency_simulator.h"

#include "tests/support/wait_until.h"
#include "wire/message_reader.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <stdexcept>
#include <string>

namespace {

constexpr std::uint32_t setClientData = 0xF000003CU;
constexpr std::string_view executePrefix = "MF.SimVars.Set.1 ";
constexpr std::string_view registerPrefix = "MF.Clients.Add.";
constexpr std::string_view subscribePrefix = "MF.SimVars.Add.";

/// A block of the response area with this text.
std::vector<std::uint8_t> responseMessage(const std::string& text) {
    std::vector<std::uint8_t> message(40 + 256);
    const std::array<std::uint32_t, 10> head{40 + 256, 4, 16, 0x1200, 0, 0x1101, 1, 1, 1, 1};
    std::memcpy(message.data(), head.data(), sizeof head);
    std::memcpy(message.data() + 40, text.data(), text.size());
    return message;
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
    shutdown(link, SHUT_RDWR);
    thread.join();
    close(listener);
    close(link);
}

bool LatencySimulator::waitUntilReady(bool needsRegistration) const {
    return waitUntil([&] { return needsRegistration ? registered.load() : link >= 0; });
}

void LatencySimulator::waitForAll() const {
    waitUntil([&] { return count.load() >= times.size(); }, std::chrono::minutes(2), std::chrono::milliseconds(5));
}

void LatencySimulator::serve() {
    link = accept(listener, nullptr, nullptr);
    const int on = 1;
    setsockopt(link, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    MessageReader reader(16);
    while (true) {
        const std::span<std::uint8_t> room = reader.prepare(1 << 18);
        const ssize_t got = recv(link, room.data(), room.size(), 0);
        if (got <= 0) {
            return;
        }
        reader.commit(static_cast<std::size_t>(got));
        while (const auto packet = reader.next()) {
            handle(*packet);
        }
    }
}

void LatencySimulator::handle(std::span<const std::uint8_t> packet) {
    std::uint32_t id = 0;
    std::memcpy(&id, packet.data() + 8, sizeof id);
    if (id == setClientData && packet.size() > 36) {
        const char* const text = reinterpret_cast<const char*>(packet.data() + 36);
        handleCommand({text, strnlen(text, packet.size() - 36)});
    }
}

void LatencySimulator::handleCommand(std::string_view text) {
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
