#include "tests/unit/mapping/output_fixture.h"

using std::string;
using std::vector;

/// What the engine makes of the variable's texts.
using BacklightPayloadHandler = OutputTest;

TEST_F(BacklightPayloadHandler, StoresTheValueLogsItAndAsksForAnUpdate) {
    start();
    auto board = connectBoard(1);
    engine.simConnected = true;
    engine.onBacklightPayload("(L:LIGHTING_POTENTIOMETER_5)=0.75;");
    EXPECT_TRUE(waitForLights(*board, {steady(75)}));
    EXPECT_TRUE(log.has("[DEBUG] State update: backlight LIGHTING_POTENTIOMETER_5=0.750000"));
    const std::lock_guard lock(simState.mutex);
    EXPECT_TRUE(simState.backlightKnown);
    EXPECT_EQ(simState.backlightValue, 0.75);
}

TEST_F(BacklightPayloadHandler, LineHasSixDecimalsWhateverTheValue) {
    ASSERT_TRUE(startEngine());
    const vector<std::pair<string, string>> rows = {
        {"1", "1.000000"}, {"-0.5", "-0.500000"},     {"1e-9", "0.000000"}, {"1e20", "100000000000000000000.000000"},
        {"inf", "inf"},    {"0.1234567", "0.123457"},
    };
    for (const auto& [text, shown] : rows) {
        engine.onBacklightPayload(text);
        EXPECT_TRUE(log.has("[DEBUG] State update: backlight LIGHTING_POTENTIOMETER_5=" + shown)) << text;
    }
    engine.onBacklightPayload("1e308");
    EXPECT_EQ(log.lines().back().size(),
              string("[DEBUG] State update: backlight LIGHTING_POTENTIOMETER_5=").size() + 309 + 7);
}

TEST_F(BacklightPayloadHandler, UnreadableTextWithTheNameIsAWarning) {
    ASSERT_TRUE(startEngine());
    engine.onBacklightPayload("0.25");
    engine.onBacklightPayload("LIGHTING_POTENTIOMETER_5=abc");
    engine.onBacklightPayload("LIGHTING_POTENTIOMETER_5");
    engine.onBacklightPayload("(L:LIGHTING_POTENTIOMETER_5)=1e999;");
    EXPECT_EQ(warnings(), (vector<string>{"[WARN] Backlight LVar payload received but could not be parsed: "
                                          "LIGHTING_POTENTIOMETER_5=abc",
                                          "[WARN] Backlight LVar payload received but could not be parsed: "
                                          "LIGHTING_POTENTIOMETER_5",
                                          "[WARN] Backlight LVar payload received but could not be parsed: "
                                          "(L:LIGHTING_POTENTIOMETER_5)=1e999;"}));
    const std::lock_guard lock(simState.mutex);
    EXPECT_EQ(simState.backlightValue, 0.25);
}

TEST_F(BacklightPayloadHandler, OtherUnreadableTextIsIgnoredWithoutAWord) {
    ASSERT_TRUE(startEngine());
    for (const char* text : {"", "abc", "LIGHTING_POTENTIOMETER_", "lighting_potentiometer_5=abc",
                             "A very long text that names no variable at all=1"})
        engine.onBacklightPayload(text);
    EXPECT_EQ(log.lines(), vector<string>{});
    const std::lock_guard lock(simState.mutex);
    EXPECT_FALSE(simState.backlightKnown);
}

TEST_F(BacklightPayloadHandler, ServesTheModulesTextsOverTheWholeRoad) {
    mobiflight.setLVarHandler([this](const string& text) { engine.onBacklightPayload(text); });
    connectModule();
    start();
    auto board = connectBoard(1);
    engine.simConnected = true;
    // 0.75 as a single, whose first byte is zero.
    sim.deliverClientData(0x1201, {0x00, 0x00, 0x40, 0x3F});
    EXPECT_TRUE(waitForLights(*board, {steady(75)}));
    sim.deliverText(0x1201, "(L:LIGHTING_POTENTIOMETER_5)=0.25;", 4096);
    EXPECT_TRUE(waitForLights(*board, {steady(75), steady(25)}));
}
