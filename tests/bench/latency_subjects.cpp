#include "tests/bench/latency_subjects.h"

#include "app/app.h"
#include "hid/hid_protocol.h"
#include "tests/bench/socket_board.h"
#include "wire/simconnect_open.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdio>
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

App* runningApp = nullptr;

bool stopApp(unsigned) {
    runningApp->requestStop();
    return true;
}

Platform subjectPlatform(int reportSocket, std::uint16_t port) {
    Platform platform = systemPlatform();
    platform.hid = socketBoardTransport(reportSocket);
    platform.simConnect.open = [port](SimConnectHandle* handle, const char* name, auto...) {
        SimConnectEndpoint endpoint;
        endpoint.address = "127.0.0.1";
        endpoint.port = port;
        return simConnectOpenAt(handle, name, endpoint);
    };
    platform.host.findProcess = [port](const auto& visit) { return port != 0 && visit("FlightSimulator.exe"); };
    // Keeps the log out of the machine's folders: it is beside this program.
    platform.host.commonDataFolder = [] { return std::string(); };
    return platform;
}

} // namespace

int runFloor(int reportSocket, std::uint16_t port) {
    const int link = connectTo(port);
    HidProtocol::Report report{};
    std::array<std::uint8_t, 2 * packetSize> packets{};
    fillSetClientData(packets.data() + packetSize, "MF.DummyCmd");
    while (read(reportSocket, report.data(), report.size()) == static_cast<ssize_t>(report.size())) {
        std::array<char, 64> text{};
        std::snprintf(text.data(), text.size(), "MF.SimVars.Set.1 %u (>K:BENCH)", report[4] | report[5] << 8U);
        fillSetClientData(packets.data(), text.data());
        // The link blocks, so it takes all bytes or is lost.
        if (send(link, packets.data(), packets.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(packets.size())) {
            return 1;
        }
    }
    return 0;
}

int runBridge(int reportSocket, std::uint16_t port, const std::string& configPath) {
    const Platform platform = subjectPlatform(reportSocket, port);
    App app(platform);
    runningApp = &app;
    platform.host.installControlHandler(stopApp);
    std::string error;
    if (!app.init(configPath, false, error)) {
        std::fprintf(stderr, "latency-bench: %s\n", error.c_str());
        return 1;
    }
    app.run();
    return 0;
}
