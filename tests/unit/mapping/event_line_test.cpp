#include "tests/unit/mapping/mapping_fixture.h"

using std::string;
using std::vector;

/// The one debug line of an event, byte for byte.
class EventLine : public MappingTest {
protected:
    string lineOf(const HidProtocol::HidEvent& event, const string& deviceName = "B", int index = 0) {
        handle(event, deviceName, index);
        return lastEventLine();
    }
};

TEST_F(EventLine, KnobWithCommand) {
    addControl(21, "HDG", R"("CW":{"":"INC"})");
    connectModule();
    ASSERT_TRUE(startEngine());
    EXPECT_EQ(lineOf(encoder(21, 1, 3), "E66138A1B2C3D4E5"),
              "[DEBUG] HID event from E66138A1B2C3D4E5 index=0 type=2 action=ENC_CW role=PFD(ENCODER) "
              "controlId=21(HDG) value=1 speed=3 mode=0 mfAmount=3 rpn=queued");
}

TEST_F(EventLine, EveryPieceThatCanStandTogether) {
    config.outputs.devices = {{"B", -1, "MFD", ""}};
    addControl(21, "HDG", R"("CCW":{"":"DEC"},"CCW_FAST":{"":"DEC10"})");
    connectModule();
    ASSERT_TRUE(startEngine());
    EXPECT_EQ(lineOf(encoder(21, -3, 9), "B", 12),
              "[DEBUG] HID event from B index=12 type=2 action=ENC_CCW role=PFD configuredRole=MFD(ENCODER) "
              "controlId=21(HDG) value=-3 speed=9 mode=0 mfAmount=1 fast=1 rpn=queued");
}

TEST_F(EventLine, BarestEvent) {
    ASSERT_TRUE(startEngine());
    EXPECT_EQ(lineOf({.mode = 2}, "", -1),
              "[DEBUG] HID event from  index=-1 type=0 controlId=0 value=0 speed=0 mode=2");
}

TEST_F(EventLine, NumbersAreDecimalAndTheValueSigned) {
    ASSERT_TRUE(startEngine());
    EXPECT_EQ(lineOf({.headerByte = 9,
                      .type = 255,
                      .controlId = 65535,
                      .value = -128,
                      .speed = 255,
                      .mode = 255,
                      .trailerWord = 77}),
              "[DEBUG] HID event from B index=0 type=255 controlId=65535 value=-128 speed=255 mode=255");
}

TEST_F(EventLine, ActionHasItsNameAndNoneHasNoPiece) {
    ASSERT_TRUE(startEngine());
    const vector<std::pair<HidProtocol::HidEvent, string>> rows = {
        {button(1, 1, 9), " action=BUTTON_PRESS("}, {button(1, 0, 9), " action=BUTTON_RELEASE("},
        {button(1, 2, 9), " action=HOLD("},         {button(1, 4, 9), " action=HOLD("},
        {encoder(1, 1, 0, 9), " action=ENC_CW("},   {encoder(1, -1, 0, 9), " action=ENC_CCW("},
        {button(1, 5, 9), " type=1(BUTTON) "},      {encoder(1, 0, 0, 9), " type=2(ENCODER) "},
    };
    for (const auto& [event, piece] : rows)
        EXPECT_NE(lineOf(event).find(piece), string::npos) << piece;
}

TEST_F(EventLine, TypesNameFollowsTheRoleWhenThereIsNoAction) {
    eventMap.eventTypes[4] = "Board Notice";
    ASSERT_TRUE(startEngine());
    EXPECT_EQ(lineOf({.type = 4, .mode = 1}),
              "[DEBUG] HID event from B index=0 type=4 role=MFD(Board Notice) controlId=0 value=0 speed=0 mode=1");
}

TEST_F(EventLine, ConfiguredRoleShowsOnlyWhereItDiffers) {
    config.outputs.devices = {{"B", -1, "PFD", ""}, {"C", -1, "", ""}, {"D", -1, "pfd", ""}};
    ASSERT_TRUE(startEngine());
    EXPECT_EQ(lineOf(button(1, 1)).find("configuredRole"), string::npos);
    EXPECT_EQ(lineOf(button(1, 1), "C").find("configuredRole"), string::npos);
    EXPECT_EQ(lineOf(button(1, 1), "Z").find("configuredRole"), string::npos);
    // The texts are compared as they stand.
    EXPECT_NE(lineOf(button(1, 1), "D").find(" role=PFD configuredRole=pfd(BUTTON)"), string::npos);
    EXPECT_NE(lineOf(button(1, 1, 1), "B").find(" role=MFD configuredRole=PFD(BUTTON)"), string::npos);
}

TEST_F(EventLine, RoleOfTheConfigurationShowsOnceInOtherModes) {
    config.outputs.devices = {{"B", -1, "Co Pilot", ""}};
    ASSERT_TRUE(startEngine());
    EXPECT_EQ(lineOf(button(1, 1, 3)), "[DEBUG] HID event from B index=0 type=1 action=BUTTON_PRESS role=Co "
                                       "Pilot(BUTTON) controlId=1 value=1 speed=0 mode=3");
}

TEST_F(EventLine, NamesStandAsTheMapWritesThem) {
    eventMap.eventTypes[1] = "but ton";
    eventMap.controlIds[300] = "com swap";
    ASSERT_TRUE(startEngine());
    EXPECT_EQ(lineOf(button(300, 0)), "[DEBUG] HID event from B index=0 type=1 action=BUTTON_RELEASE role=PFD(but ton) "
                                      "controlId=300(com swap) value=0 speed=0 mode=0");
}

TEST_F(EventLine, PressWithCommand) {
    addControl(20, "SWAP", R"("PRESS":{"":"X"})");
    connectModule();
    ASSERT_TRUE(startEngine());
    EXPECT_EQ(lineOf(button(20, 1)), "[DEBUG] HID event from B index=0 type=1 action=BUTTON_PRESS role=PFD(BUTTON) "
                                     "controlId=20(SWAP) value=1 speed=0 mode=0 rpn=queued");
}

TEST_F(EventLine, PressOfAnUnlistedControl) {
    eventMap.controlIds[5] = "AP_MASTER";
    connectModule();
    ASSERT_TRUE(startEngine());
    EXPECT_EQ(lineOf(button(5, 1)), "[DEBUG] HID event from B index=0 type=1 action=BUTTON_PRESS role=PFD(BUTTON) "
                                    "controlId=5(AP_MASTER) value=1 speed=0 mode=0 simEvent=sent");
}

TEST_F(EventLine, ManagedMapButtonHasTheShortLine) {
    config.outputs.devices = {{"B", -1, "MFD", ""}};
    addControl(30, "Map_ Left", R"("PRESS":{"":"LEFT"})");
    connectModule();
    ASSERT_TRUE(startEngine());
    EXPECT_EQ(lineOf(button(30, 1)), "[DEBUG] HID event from B index=0 type=1 action=BUTTON_PRESS role=PFD(BUTTON) "
                                     "controlId=30(Map_ Left) value=1 speed=0 mode=0");
    EXPECT_EQ(lineOf(button(30, 0, 7)), "[DEBUG] HID event from B index=0 type=1 action=BUTTON_RELEASE "
                                        "role=MFD(BUTTON) controlId=30(Map_ Left) value=0 speed=0 mode=7");
}

TEST_F(EventLine, KnobOfAManagedNameHasTheFullLine) {
    config.outputs.devices = {{"B", -1, "MFD", ""}};
    addControl(30, "MAP_LEFT", R"("CW":{"":"LEFT"})");
    connectModule();
    ASSERT_TRUE(startEngine());
    EXPECT_EQ(lineOf(encoder(30, 2)),
              "[DEBUG] HID event from B index=0 type=2 action=ENC_CW role=PFD configuredRole=MFD(ENCODER) "
              "controlId=30(MAP_LEFT) value=2 speed=0 mode=0 mfAmount=2 rpn=queued");
}

TEST_F(EventLine, ComesBehindTheLinesOfItsRoute) {
    addControl(20, "SWAP", R"("PRESS":{"":"X"})");
    ASSERT_TRUE(startEngine());
    handle(button(20, 1));
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], "[DEBUG] MobiFlight not ready; using SimConnect fallback for SWAP");
    EXPECT_NE(lines[1].find("HID event from"), string::npos);
}

TEST_F(EventLine, IsNotWrittenWhileDebugIsOff) {
    addControl(20, "SWAP", R"("PRESS":{"":"X"})");
    connectModule();
    ASSERT_TRUE(startEngine());
    Logger::instance().setDebugEnabled(false);
    log.clear();
    engine.submitEvent(button(20, 1), "B", 0);
    ASSERT_TRUE(waitUntil([this] { return writtenCount() == 2; }));
    engine.stop();
    EXPECT_EQ(log.lines(), vector<string>{});
}
