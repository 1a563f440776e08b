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

TEST_F(EventLine, HasWhatTheEventTheDecisionAndTheOutcomeSay) {
    config.outputs.devices = {{"B", -1, "MFD", ""}};
    EXPECT_EQ(lineOf(encoder(21, -3, 9), {.mfAmount = 1, .simEventSent = true, .rpnQueued = true}, "B", 12),
              "HID event from B index=12 type=2 action=ENC_CCW role=PFD configuredRole=MFD(ENCODER) controlId=21(HDG) "
              "value=-3 speed=9 mode=0 mfAmount=1 fast=1 simEvent=sent rpn=queued");
    EXPECT_EQ(lineOf({.mode = 2}, {}, "", -1), "HID event from  index=-1 type=0 controlId=0 value=0 speed=0 mode=2");
}

TEST_F(EventLine, HasNamesAsTheMapWritesThem) {
    eventMap.eventTypes[4] = "Board Notice";
    eventMap.controlIds[0] = "com swap";
    EXPECT_EQ(lineOf(notice(1)),
              "HID event from B index=0 type=4 role=MFD(Board Notice) controlId=0(com swap) value=0 speed=0 mode=1");
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

TEST_F(EventLine, OfAMapButtonHasNoConfiguredRole) {
    config.outputs.devices = {{"B", -1, "MFD", ""}};
    EXPECT_EQ(lineOf(button(30, 1)), "HID event from B index=0 type=1 action=BUTTON_PRESS role=PFD(BUTTON) "
                                     "controlId=30(Map_ Left) value=1 speed=0 mode=0");
    EXPECT_NE(lineOf(button(30, 0, 7)).find(" role=MFD(BUTTON)"), string::npos);
    EXPECT_NE(lineOf(encoder(30, 2)).find(" role=PFD configuredRole=MFD(ENCODER)"), string::npos);
}
