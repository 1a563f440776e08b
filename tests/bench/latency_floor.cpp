// What no bridge can beat: reads a report, sends the bytes that the bridge would send: latency-floor REPORT-SOCKET PORT

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr std::size_t packetSize = 36 + 256;

int connectTo(std::uint16_t port) {
    const int link = socket(AF_INET, SOCK_STREAM, 0);
    const int on = 1;
    setsockopt(link, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return connect(link, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ? link : -1;
}

/// The request to set the command area to a text; only what the bench's simulator looks at is filled.
void fillSetClientData(std::uint8_t* packet, const char* text) {
    const std::array<std::uint32_t, 9> head{packetSize, 4, 0xF000003CU, 1, 0x1000, 0x1100, 0, 0, 256};
    std::memset(packet, 0, packetSize);
    std::memcpy(packet, head.data(), sizeof head);
    std::memcpy(packet + 36, text, std::strlen(text));
}

bool sendAll(int link, const std::uint8_t* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t sent = send(link, bytes, size, MSG_NOSIGNAL);
        if (sent <= 0) {
            return false;
        }
        bytes += sent;
        size -= static_cast<std::size_t>(sent);
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        return 2;
    }
    const int reports = std::atoi(argv[1]);
    const int link = connectTo(static_cast<std::uint16_t>(std::atoi(argv[2])));
    if (link < 0) {
        return 1;
    }
    std::array<std::uint8_t, 32> report{};
    std::array<std::uint8_t, 2 * packetSize> packets{};
    fillSetClientData(packets.data() + packetSize, "MF.DummyCmd");
    while (read(reports, report.data(), report.size()) == 32) {
        std::array<char, 64> text{};
        std::snprintf(text.data(), text.size(), "MF.SimVars.Set.1 %u (>K:BENCH)", report[4] | report[5] << 8U);
        fillSetClientData(packets.data(), text.data());
        if (!sendAll(link, packets.data(), packets.size())) {
            return 1;
        }
    }
    close(link);
    return 0;
}
