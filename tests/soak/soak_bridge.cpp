#include "tests/soak/soak_bridge.h"

#include "tests/support/numbered_controls.h"
#include "tests/support/wait_until.h"
#include "wire/simconnect_open.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>

namespace {

/// The longest that a wait of the bridge lasts here, the dispatch poll's included.
constexpr std::chrono::milliseconds longestSleep{5};

} // namespace

SoakConfiguration::SoakConfiguration()
    : path((std::filesystem::temp_directory_path() / ("soak-" + std::to_string(std::random_device()()))).string()) {
    std::filesystem::create_directory(path);
    std::ofstream(configPath())
        << R"({"hid":{"vid":"1234","pid":"ABCD","scanIntervalMs":5},"mappings":{"buttonConfigPath":"buttons.json"},)"
        << R"("outputs":{"debounceMs":5}})";
    writeNumberedControls(path, controls, "(>K:SOAK)");
}

SoakConfiguration::~SoakConfiguration() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

SoakBridge::SoakBridge(const SoakConfiguration& configuration, const VirtualHidBus& bus,
                       const VirtualSimulator& simulator)
    : app(std::make_unique<App>(makePlatform(configuration, bus, simulator.port()))) {
    std::string error;
    if (!app->init(configuration.configPath(), false, error))
        throw std::runtime_error("the bridge doesn't start: " + error);
    mainThread = std::thread([this] {
        app->run();
        ended = true;
    });
}

SoakBridge::~SoakBridge() {
    app->requestStop();
    mainThread.join();
}

bool SoakBridge::waitForEnd() {
    return waitUntil([this] { return ended.load(); }, std::chrono::seconds(60));
}

Platform SoakBridge::makePlatform(const SoakConfiguration& configuration, const VirtualHidBus& bus,
                                  std::uint16_t port) {
    Platform platform = systemPlatform();
    platform.hid = bus.transport();
    platform.simConnect.open = [port](SimConnectHandle* handle, const char* name, void*, std::uint32_t, void*,
                                      std::uint32_t) {
        return simConnectOpenAt(handle, name, SimConnectEndpoint{.address = "127.0.0.1", .port = port});
    };
    platform.host.findProcess = [this](const auto& visit) { return simulatorRunning && visit("FlightSimulator.exe"); };
    platform.host.commonDataFolder = [folder = configuration.folder()] { return folder; };
    platform.host.sleepFor = [](std::chrono::milliseconds duration) {
        std::this_thread::sleep_for(std::min(duration, longestSleep));
    };
    return platform;
}
