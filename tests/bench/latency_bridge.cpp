// The bridge as a process, on a board that the bench drives: latency-bridge REPORT-SOCKET PORT CONFIG
// With port 0 there is no simulator.

#include "app/app.h"
#include "tests/bench/socket_board.h"
#include "wire/simconnect_open.h"

#include <cstdio>
#include <cstdlib>

namespace {

App* runningApp = nullptr;

bool stopApp(unsigned) {
    runningApp->requestStop();
    return true;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        return 2;
    }
    const auto port = static_cast<std::uint16_t>(std::atoi(argv[2]));
    Platform platform = systemPlatform();
    platform.hid = socketBoardTransport(std::atoi(argv[1]));
    platform.simConnect.open = [port](SimConnectHandle* handle, const char* name, void*, std::uint32_t, void*,
                                      std::uint32_t) {
        SimConnectEndpoint endpoint;
        endpoint.address = "127.0.0.1";
        endpoint.port = port;
        return simConnectOpenAt(handle, name, endpoint);
    };
    platform.host.findProcess = [port](const auto& visit) { return port != 0 && visit("FlightSimulator.exe"); };
    // Keeps the log out of the machine's folders: it lies beside this program.
    platform.host.commonDataFolder = [] { return std::string(); };
    App app(platform);
    runningApp = &app;
    platform.host.installControlHandler(stopApp);
    std::string error;
    if (!app.init(argv[3], false, error)) {
        std::fprintf(stderr, "latency-bridge: %s\n", error.c_str());
        return 1;
    }
    app.run();
    return 0;
}
