#include "companion/live/decoded_event.h"

#include "companion/live/live_text.h"
#include "tests/unit/mapping/mapping_settings.h"

namespace {

/// What `vantrel watch` says about an event.
class DecodedEventTest : public testing::Test, protected MappingSettings {
protected:
    struct Row {
        HidProtocol::HidEvent event;
        std::string text;
    };

    DecodedEventTest() {
        addControl(20, "Com Swap", R"("PRESS":{"":"SWAP"},"RELEASE":{"":""})");
        addControl(21, "HDG", R"("CW":{"":"INC"},"CCW":{"":"DEC"},"CW_FAST":{"":"INC10"})");
        addControl(22, "MENU", R"("PRESS":{"PFD":"A","COPILOT":"B"},"HOLD":{"COPILOT":"C"})");
        addControl(30, "MAP_LEFT", R"("PRESS":{"":"LEFT"},"HOLD":{"":"LEFT_HELD"})");
        addControl(50, "NAV_SWAP", R"("HOLD":{"":"NAV"})");
        eventMap.controlIds[40] = "SPARE";
        config.outputs.devices = {{"B", -1, "COPILOT", ""}};
    }

    DecodedEvent decoded(const HidProtocol::HidEvent& event, const std::string& board = "B") const {
        return decodeEvent({config, buttons, eventMap, ""}, event, board, 0);
    }

    void expectTexts(const std::vector<Row>& rows, const std::string& board = "B") const {
        for (const auto& [event, text] : rows) {
            const DecodedEvent result = decoded(event, board);
            EXPECT_EQ(controlText(result) + ' ' + actionText(result) + ": " + answerText(result), text);
        }
    }
};

} // namespace

TEST_F(DecodedEventTest, SaysWhatTheBridgeSends) {
    expectTexts({{button(20, 1), "Com Swap (20) press: sends SWAP"},
                 {encoder(21, 3), "HDG (21) clockwise 3: sends INC 3 times"},
                 {encoder(21, -1), "HDG (21) counter-clockwise 1: sends DEC"},
                 {encoder(21, 2, 4), "HDG (21) clockwise 2, speed 4: sends INC10 (fast turn)"},
                 {button(22, 1, 255), "MENU (22) press: sends B"},
                 {button(30, 1), "MAP_LEFT (30) press: sends LEFT"},
                 {button(30, 2), "MAP_LEFT (30) hold: repeats LEFT_HELD until the release"},
                 {button(5, 1), "control 5 press: fires the simulator's event AP_MASTER"}});
}

TEST_F(DecodedEventTest, SaysWhyTheBridgeSendsNothing) {
    expectTexts(
        {{button(20, 0), "Com Swap (20) release: sends nothing: \"Com Swap\" has no RELEASE command"},
         {button(22, 2), "MENU (22) hold: sends nothing: \"MENU\" has a HOLD command for COPILOT, but not for PFD"},
         {button(22, 1, 1),
          "MENU (22) press: sends nothing: \"MENU\" has a PRESS command for PFD and COPILOT, but not for MFD"},
         {button(30, 0), "MAP_LEFT (30) release: sends nothing: the release of a map button ends its repeat"},
         {button(99, 1), "control 99 press: sends nothing: the event map has no name for control 99"},
         {button(40, 1), "SPARE (40) press: sends nothing: the command file doesn't list \"SPARE\""},
         {button(5, 0), "control 5 release: sends nothing: only the press of this control fires an event, AP_MASTER"},
         {button(20, 5),
          "Com Swap (20) type 1, value 5: sends nothing: the value is neither a press nor a release, a hold or a turn"},
         {{.type = 7, .controlId = 20},
          "Com Swap (20) type 7, value 0: sends nothing: the bridge knows no events of this type"},
         {notice(), "control 0 type 4, value 0: sends nothing: the board uses its lights itself for a moment"}});
    expectTexts(
        {{button(22, 1, 255), "MENU (22) press: sends nothing: \"MENU\" has a PRESS command for PFD and COPILOT, "
                              "but the board has no role"}},
        "another");
}

TEST_F(DecodedEventTest, SaysThatMobiFlightIsDisabled) {
    config.mobiflight.enabled = false;
    expectTexts({{button(20, 1), "Com Swap (20) press: sends nothing: \"mobiflight.enabled\" is 0 in config.json"}});
}

TEST_F(DecodedEventTest, KnowsTheRole) {
    EXPECT_EQ(decoded(button(20, 1, 255)).role, "COPILOT");
    EXPECT_EQ(decoded(button(20, 1, 1)).role, "MFD");
}
