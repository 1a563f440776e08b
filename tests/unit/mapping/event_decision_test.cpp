#include "mapping/event_decision.h"

#include "tests/unit/mapping/mapping_settings.h"

#include <map>

using HidProtocol::HidEvent;
using std::string;

/// What an event means, as one line of text: each thing to do in the order in which it is done.
class EventDecisionTest : public testing::Test, protected MappingSettings {
protected:
    struct Row {
        HidEvent event;
        string meaning;
    };

    EventDecisionTest() {
        addControl(20, "Com Swap", R"("PRESS":{"":"SWAP"},"RELEASE":{"":"LET_GO"},"HOLD":{"":"SWAP_LONG"})");
        addControl(21, "HDG", R"("CW":{"":"INC"},"CCW":{"":"DEC"},"CW_FAST":{"":"INC10"})");
        addControl(22, "MENU",
                   R"("PRESS":{"PFD":"PFD_MENU","MFD":"MFD_MENU","COPILOT":"COPILOT_MENU","DEFAULT":"MENU"})");
        addControl(30, "MAP_LEFT", R"("PRESS":{"":"LEFT","MFD":"MFD_LEFT"},"HOLD":{"":"LEFT_HELD"})");
        addControl(31, "MAP_UP", R"("PRESS":{"":"UP"})");
        addControl(32, "MAP_DOWN", R"("RELEASE":{"":"DOWN"})");
        addControl(33, " map_ Right", R"("CW":{"":"RIGHT"},"HOLD":{"":"RIGHT_HELD"})");
        addControl(50, " nav_\tSwap", R"("PRESS":{"":"NAV"})");
    }

    string meaning(const HidEvent& event, const string& deviceName = "B", int index = 0) const {
        const EventDecision decision = decideEvent(config, buttons, eventMap, event, deviceName, index);
        string text = decision.pausesLights ? ", pause" : "";
        text += decision.isMapButton ? ", map" : "";
        for (const string& command : decision.cancelled) {
            text += ", cancel " + command;
        }
        if (!decision.command.empty()) {
            const char* const kind = decision.kind == RpnKind::Hold      ? "hold "
                                     : decision.kind == RpnKind::Encoder ? "turn "
                                                                         : "send ";
            text += ", " + (kind + decision.command) + " x" + std::to_string(decision.amount);
        }
        text += decision.fast ? " fast" : "";
        text += decision.simEvent.empty() ? "" : ", fire " + string(decision.simEvent);
        return text.empty() ? "" : text.substr(2);
    }

    void expectMeanings(const std::vector<Row>& rows) const {
        for (const auto& [event, expected] : rows) {
            EXPECT_EQ(meaning(event), expected)
                << "type " << int{event.type} << " control " << event.controlId << " value " << int{event.value}
                << " speed " << int{event.speed} << " mode " << int{event.mode};
        }
    }

    void expectNothing(const std::vector<HidEvent>& events) const {
        for (const HidEvent& event : events) {
            expectMeanings({{event, ""}});
        }
    }
};

TEST_F(EventDecisionTest, EachActionHasItsCommand) {
    expectMeanings({{button(20, 1), "send SWAP x1"},
                    {button(20, 2), "hold SWAP_LONG x1"},
                    {button(20, 4), "hold SWAP_LONG x1"},
                    {button(20, 0), "cancel SWAP_LONG, cancel SWAP, send LET_GO x1"},
                    // The speed of a button is ignored.
                    {{.type = 1, .controlId = 20, .value = 1, .speed = 9}, "send SWAP x1"},
                    {encoder(21, 1), "turn INC x1"},
                    {encoder(21, -1), "turn DEC x1"}});
}

TEST_F(EventDecisionTest, EventWithoutActionOrCommandMeansNothing) {
    expectNothing({button(20, 5), encoder(21, 0, 9), {.type = 3, .controlId = 20, .value = 1}});
    expectNothing({button(21, 1), button(22, 2), encoder(20, 1)});
    expectMeanings({{button(22, 0), "cancel PFD_MENU"}});
}

TEST_F(EventDecisionTest, NamesAreComparedWithoutCaseAndSpaceAndBlanksAreNone) {
    eventMap.controlIds[40] = " com\tSWAP ";
    eventMap.controlIds[41] = "  ";
    eventMap.controlIds[42] = "";
    expectMeanings({{button(40, 1), "send SWAP x1"}});
    expectNothing({button(999, 1), encoder(999, 1), button(41, 1), button(42, 1)});
}

TEST_F(EventDecisionTest, AmountIsTheLargerOfDetentsAndSpeed) {
    // There is no fast command counter-clockwise.
    expectMeanings({{encoder(21, -1, 0), "turn DEC x1"},
                    {encoder(21, -2, 0), "turn DEC x2"},
                    {encoder(21, -1, 3), "turn DEC x3"},
                    {encoder(21, -5, 3), "turn DEC x5"},
                    {encoder(21, -128, 0), "turn DEC x128"},
                    {encoder(21, -1, 255), "turn DEC x255"}});
}

TEST_F(EventDecisionTest, FastCommandIsSentOnceFromSpeedFourOn) {
    expectMeanings({{encoder(21, 1, 3), "turn INC x3"},
                    {encoder(21, 7, 4), "turn INC10 x1 fast"},
                    {encoder(21, 1, 255), "turn INC10 x1 fast"}});
}

TEST_F(EventDecisionTest, FastCommandCountsForItsRoleAndUnlessEmpty) {
    addControl(25, "CRS", R"("CW":{"":"CRS"},"CW_FAST":{"MFD":"CRS10"},"CCW":{"":"BACK"},"CCW_FAST":{"":""})");
    addControl(26, "FAST", R"("CCW_FAST":{"":"FAST10"})");
    expectMeanings({{encoder(25, 1, 4, 0), "turn CRS x4"},
                    {encoder(25, 1, 4, 1), "turn CRS10 x1 fast"},
                    {encoder(25, -1, 6), "turn BACK x6"},
                    {encoder(26, -1, 3), ""},
                    {encoder(26, -1, 4), "turn FAST10 x1 fast"}});
}

TEST_F(EventDecisionTest, ModeOfTheBoardOutranksItsConfiguredRole) {
    config.outputs.devices = {{"B", -1, " coPilot", ""}, {"", 4, "mfd", ""}};
    expectMeanings({{button(22, 1, 0), "send PFD_MENU x1"},
                    {button(22, 1, 1), "send MFD_MENU x1"},
                    {button(22, 1, 2), "send COPILOT_MENU x1"},
                    {button(22, 1, 255), "send COPILOT_MENU x1"},
                    {button(22, 0, 1), "cancel MFD_MENU"}});
    EXPECT_EQ(meaning(button(22, 1, 7), "another"), "send MENU x1");
    EXPECT_EQ(meaning(button(22, 1, 7), "another", 4), "send MFD_MENU x1");
}

TEST_F(EventDecisionTest, PressOfAnUnlistedControlFiresTheEventOfItsNumber) {
    const std::map<std::uint16_t, string> names = {
        {5, "AP_MASTER"},   {6, "TOGGLE_FLIGHT_DIRECTOR"}, {7, "AP_HDG_HOLD"}, {8, "AP_ALT_HOLD"}, {9, "AP_NAV1_HOLD"},
        {11, "AP_BC_HOLD"}, {12, "AP_APR_HOLD"},           {13, "AP_VS_HOLD"}, {16, "AP_FLC"},
    };
    eventMap.controlIds[5] = "AP_MASTER";
    for (const bool enabled : {true, false}) {
        config.mobiflight.enabled = enabled;
        for (std::uint16_t id = 0; id < 20; ++id) {
            expectMeanings({{button(id, 1), names.contains(id) ? "fire " + names.at(id) : ""}});
        }
    }
    expectNothing({button(5, 0), button(5, 2), encoder(5, 1), {.type = 3, .controlId = 5}});
    addControl(5, "AP", R"("RELEASE":{"":"X"})");
    expectNothing({button(5, 1)});
}

TEST_F(EventDecisionTest, ListedControlMeansNothingWhileMobiFlightIsDisabled) {
    addControl(5, "AP", R"("PRESS":{"":"AP"})");
    config.mobiflight.enabled = false;
    for (const int value : {0, 1, 2}) {
        expectNothing({button(5, value), button(20, value), button(30, value), encoder(21, value)});
    }
    expectMeanings({{button(50, 2), "pause"}});
}

TEST_F(EventDecisionTest, MapButtonsAreFourNamesInAnyCaseAndSpacing) {
    for (const char* const name : {"MAP_LEFT", "map_right", " Map_Up", "MAP_ DOWN"}) {
        addControl(40, name, R"("PRESS":{"":"X"})");
        expectMeanings({{button(40, 1), "map, send X x1"}});
    }
    for (const char* const name : {"MAP_LEFTT", "MAPLEFT", "MAP_ZOOM"}) {
        addControl(40, name, R"("PRESS":{"":"Y"})");
        expectMeanings({{button(40, 1), "send Y x1"}});
    }
    // One that the command file doesn't list is a control like any other.
    buttons = {};
    expectNothing({button(30, 1)});
}

TEST_F(EventDecisionTest, MapButtonSendsItsPressRepeatsItsHoldAndHasNoRelease) {
    expectMeanings({{button(30, 1), "map, send LEFT x1"},
                    {button(30, 1, 1), "map, send MFD_LEFT x1"},
                    {button(30, 2), "map, hold LEFT_HELD x1"},
                    {button(30, 0), "map, cancel LEFT_HELD, cancel LEFT"},
                    {button(30, 0, 1), "map, cancel LEFT_HELD, cancel MFD_LEFT"},
                    {button(31, 2), "map, hold UP x1"},
                    {button(32, 2), "map"},
                    {button(32, 0), "map"},
                    {encoder(33, 2), "turn RIGHT x2"}});
    expectNothing({button(30, 5)});
}

TEST_F(EventDecisionTest, NoticeAndHoldOfTheSwapKeyPauseTheLights) {
    addControl(51, "NAV_SWAPS", R"("HOLD":{"":"NAV"})");
    eventMap.controlIds[52] = "NAV_SWAP ";
    eventMap.controlIds[53] = "NAV SWAP";
    expectMeanings({{notice(), "pause"},
                    {{.type = 4, .controlId = 20, .value = 1}, "pause"},
                    {button(50, 2), "pause"},
                    {button(50, 4), "pause"},
                    {button(50, 1), "send NAV x1"},
                    {button(50, 0), "cancel NAV"},
                    {button(51, 2), "hold NAV x1"},
                    {button(52, 2), "pause"}});
    expectNothing({button(50, 5), encoder(50, 2), {.type = 3, .controlId = 50, .value = 2}, button(53, 2)});
    buttons = {};
    expectNothing({button(50, 2)});
}
