#pragma once

#include "tests/unit/mapping/mapping_fixture.h"

/// Nanoseconds of a millisecond.
constexpr std::int64_t msNs = 1'000'000;

/// What a board of the default profile shows.
inline const LedCommand disconnectedFlash{.effect = 3, .count = 4, .periodMs = 150, .level = 100};
inline const LedCommand batteryBreathe{.effect = 2, .count = 5, .periodMs = 1000, .level = 50};

inline LedCommand steady(std::uint8_t brightness) {
    return {.effect = 1, .brightness = brightness};
}

/// The lights that a board was told to show, each time it was told, in order.
inline std::vector<LedCommand> lights(const VirtualBoard& board) {
    std::vector<LedCommand> result;
    for (const BoardOutput& output : board.outputs()) {
        const auto& bytes = output.bytes;
        if (bytes.size() < 7 || bytes[0] != HidProtocol::ledCtlReportId)
            continue;
        result.push_back(
            {bytes[1], bytes[2], bytes[3], static_cast<std::uint16_t>(bytes[4] | (bytes[5] << 8)), bytes[6]});
    }
    return result;
}

/// What the boards show. Requests act at once unless a test sets a debounce.
class OutputTest : public MappingTest {
protected:
    void start() {
        startHid();
        ASSERT_TRUE(startEngine());
    }

    std::shared_ptr<VirtualBoard> connectBoard(std::uint8_t number) {
        auto board = plugBoard(number);
        hid.scanDevices();
        return board;
    }

    static std::string boardName(int number) { return "000000000000000" + std::to_string(number); }

    void setBacklight(double value) { engine.onBacklightPayload(std::to_string(value)); }

    void setBattery(bool on) {
        {
            const std::lock_guard lock(simState.mutex);
            simState.batteryKnown = true;
            simState.batteryOn = on;
        }
        engine.requestOutputUpdate();
    }

    void setConnected(bool connected) {
        engine.simConnected = connected;
        engine.requestOutputUpdate();
    }

    static bool waitForLights(const VirtualBoard& board, const std::vector<LedCommand>& expected) {
        waitUntil([&] { return lights(board).size() >= expected.size(); });
        EXPECT_EQ(lights(board), expected);
        return lights(board) == expected;
    }
};
