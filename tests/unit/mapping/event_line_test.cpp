#include "mapping/event_line.h"

#include "tests/unit/mapping/mapping_settings.h"

using HidProtocol::HidEvent;
using std::string;

/// The one debug line of an event, byte for byte.
class EventLine : public testing::Test, protected MappingSettings {
protected:
    EventLine() {
        addControl(21, "HDG", R"("CW":{"":"INC"},"CCW":{"":"DEC"},"CCW_FAST":{"":"DEC10"})");
        addControl(30, "Map_ Left", R"("PRESS":{"":"LEFT"},"CW":{"":"LEFT"})");
    }

    string lineOf(const HidEvent& event, const EventOutcome& outcome = {}, const string& deviceName = "B",
                  int index = 0) const {
        return eventLine({event, deviceName, static_cast<std::uint32_t>(index)},
                         decideEvent(config, buttons, eventMap, event, deviceName, index), outcome);
    }
};

TEST_F(EventLine, HasItsPiecesInOrder) {
    EXPECT_EQ(
        lineOf(encoder(21, 1, 3), {.mfAmount = 3, .rpnQueued = true}, "E66138A1B2C3D4E5"),
        "HID event from E66138A1B2C3D4E5 index=0 type=2 action=ENC_CW role=PFD(ENCODER) controlId=21(HDG) value=1 "
        "speed=3 mode=0 mfAmount=3 rpn=queued");
    EXPECT_EQ(lineOf(button(5, 1), {.simEventSent = true}),
              "HID event from B index=0 type=1 action=BUTTON_PRESS role=PFD(BUTTON) controlId=5 value=1 speed=0 mode=0 "
              "simEvent=sent");
    config.outputs.devices = {{"B", -1, "MFD", ""}};
    EXPECT_EQ(lineOf(encoder(21, -3, 9), {.mfAmount = 1, .simEventSent = true, .rpnQueued = true}, "B", 12),
              "HID event from B index=12 type=2 action=ENC_CCW role=PFD configuredRole=MFD(ENCODER) controlId=21(HDG) "
              "value=-3 speed=9 mode=0 mfAmount=1 fast=1 simEvent=sent rpn=queued");
}

TEST_F(EventLine, LeavesOutWhatIsNotThere) {
    EXPECT_EQ(lineOf({.mode = 2}, {}, "", -1), "HID event from  index=-1 type=0 controlId=0 value=0 speed=0 mode=2");
    eventMap.eventTypes[4] = "Board Notice";
    EXPECT_EQ(lineOf(notice(1)),
              "HID event from B index=0 type=4 role=MFD(Board Notice) controlId=0 value=0 speed=0 mode=1");
}

TEST_F(EventLine, HasDecimalNumbersAndASignedValue) {
    EXPECT_EQ(lineOf({.headerByte = 9,
                      .type = 255,
                      .controlId = 65535,
                      .value = -128,
                      .speed = 255,
                      .mode = 255,
                      .trailerWord = 77}),
              "HID event from B index=0 type=255 controlId=65535 value=-128 speed=255 mode=255");
}

TEST_F(EventLine, NamesTheAction) {
    const std::vector<std::pair<HidEvent, string>> rows = {
        {button(1, 1, 9), " action=BUTTON_PRESS("}, {button(1, 0, 9), " action=BUTTON_RELEASE("},
        {button(1, 2, 9), " action=HOLD("},         {button(1, 4, 9), " action=HOLD("},
        {encoder(1, 1, 0, 9), " action=ENC_CW("},   {encoder(1, -1, 0, 9), " action=ENC_CCW("},
        {button(1, 5, 9), " type=1(BUTTON) "},      {encoder(1, 0, 0, 9), " type=2(ENCODER) "},
    };
    for (const auto& [event, piece] : rows) {
        EXPECT_NE(lineOf(event).find(piece), string::npos) << piece;
    }
}

TEST_F(EventLine, ShowsTheConfiguredRoleWhereItDiffers) {
    config.outputs.devices = {{"B", -1, "PFD", ""}, {"C", -1, "", ""}, {"D", -1, "pfd", ""}, {"E", -1, "Co Pilot", ""}};
    const std::vector<std::pair<string, string>> rows = {
        {"B", " role=PFD(BUTTON)"},
        {"C", " role=PFD(BUTTON)"},
        {"Z", " role=PFD(BUTTON)"},
        // The texts are compared byte for byte.
        {"D", " role=PFD configuredRole=pfd(BUTTON)"},
        {"E", " role=PFD configuredRole=Co Pilot(BUTTON)"},
    };
    for (const auto& [deviceName, piece] : rows) {
        EXPECT_NE(lineOf(button(1, 1), {}, deviceName).find(piece), string::npos) << deviceName;
    }
    EXPECT_NE(lineOf(button(1, 1, 3), {}, "E").find(" role=Co Pilot(BUTTON)"), string::npos);
}

TEST_F(EventLine, HasNamesAsTheMapWritesThem) {
    eventMap.eventTypes[1] = "but ton";
    eventMap.controlIds[300] = "com swap";
    EXPECT_NE(lineOf(button(300, 0)).find("(but ton) controlId=300(com swap) "), string::npos);
}

TEST_F(EventLine, OfAMapButtonHasNoConfiguredRole) {
    config.outputs.devices = {{"B", -1, "MFD", ""}};
    EXPECT_EQ(lineOf(button(30, 1)), "HID event from B index=0 type=1 action=BUTTON_PRESS role=PFD(BUTTON) "
                                     "controlId=30(Map_ Left) value=1 speed=0 mode=0");
    EXPECT_NE(lineOf(button(30, 0, 7)).find(" role=MFD(BUTTON)"), string::npos);
    EXPECT_NE(lineOf(encoder(30, 2)).find(" role=PFD configuredRole=MFD(ENCODER)"), string::npos);
}
