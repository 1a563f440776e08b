#pragma once

#include "config/app_config.h"
#include "config/button_config.h"
#include "config/hid_event_map.h"
#include "mapping/mapping_engine.h"
#include "mobiflight/mobiflight_client.h"
#include "platform/platform.h"
#include "sim/simconnect_client.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

/// A simulator that confirms the registration at once, counts what it is sent and costs nothing else.
class CountingSimulator {
public:
    SimConnectLibrary library() {
        SimConnectLibrary result;
        result.open = [](SimConnectHandle* handle, auto...) {
            *handle = reinterpret_cast<SimConnectHandle>(std::uintptr_t{1});
            return simConnectOk;
        };
        const auto succeed = [](auto...) { return simConnectOk; };
        result.close = succeed;
        result.callDispatch = [](auto...) { return simConnectOk; };
        result.addToDataDefinition = succeed;
        result.requestDataOnSimObject = succeed;
        result.mapClientEventToSimEvent = succeed;
        result.transmitClientEvent = succeed;
        result.mapClientDataNameToId = succeed;
        result.addToClientDataDefinition = succeed;
        result.requestClientData = succeed;
        result.setClientData = [this](auto...) {
            writes.fetch_add(1, std::memory_order_relaxed);
            return simConnectOk;
        };
        return result;
    }

    std::atomic<std::uint64_t> writes{0};
};

/// The part of the bridge behind the boards, connected and registered, with a command for a press of control 22.
class BenchBridge {
public:
    BenchBridge()
        : platform(systemPlatform()),
          simConnect(simulator.library(), hostWithSimulator()),
          mobiflight(simulator.library(), platform.host),
          engine(platform.host) {
        std::string error;
        config.mobiflight.clientName = "bench";
        loadTables();
        mobiflight.start(&simConnect, config.mobiflight, error);
        simConnect.start(
            "bench", [this](bool connected) { mobiflight.onSimConnectState(connected); }, {}, error);
        while (!simConnect.isConnected()) {
            std::this_thread::yield();
        }
        static constexpr char confirmation[] = "MF.Clients.Add.bench.Finished";
        waitForWrites(1);
        mobiflight.onClientData(0x1200, reinterpret_cast<const std::uint8_t*>(confirmation), sizeof confirmation);
        waitForWrites(3);
    }
    ~BenchBridge() {
        engine.stop();
        mobiflight.stop();
        simConnect.stop();
    }
    BenchBridge(const BenchBridge&) = delete;
    BenchBridge& operator=(const BenchBridge&) = delete;

    bool startEngine() {
        std::string error;
        return engine.start(&config, nullptr, &simConnect, &mobiflight, &buttons, &eventMap, nullptr, error);
    }

    void waitForWrites(std::uint64_t count) const {
        while (simulator.writes.load() < count) {
            std::this_thread::yield();
        }
    }

    CountingSimulator simulator;
    Platform platform;
    AppConfig config;
    ButtonConfig buttons;
    HidEventMap eventMap;
    SimConnectClient simConnect;
    MobiFlightClient mobiflight;
    MappingEngine engine;

private:
    Host hostWithSimulator() const {
        Host host = platform.host;
        host.findProcess = [](const auto& visit) { return visit("FlightSimulator.exe"); };
        return host;
    }

    void loadTables() {
        eventMap.eventTypes = {{1, "BUTTON"}};
        eventMap.controlIds = {{22, "BUTTON"}};
        std::string error;
        buttons.parse(R"json({"buttons":[{"name":"BUTTON","commands":{"PRESS":{"":"1 (>K:AP_MASTER)"}}}]})json", error);
    }
};
