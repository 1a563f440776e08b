#include "simulation/cockpit/cockpit_action.h"

#include <gtest/gtest.h>

namespace {

CockpitAction readAction(const std::string& json) {
    CockpitAction action;
    std::string error;
    EXPECT_TRUE(readCockpitAction(JsonParser::parse(json).value, action, error)) << json << ": " << error;
    return action;
}

std::string failureOf(const std::string& json) {
    CockpitAction action;
    std::string error;
    EXPECT_FALSE(readCockpitAction(JsonParser::parse(json).value, action, error)) << json;
    return error;
}

} // namespace

TEST(CockpitAction, ReadsWhatAHandDoes) {
    CockpitAction press;
    press.kind = CockpitActionKind::Press;
    press.board = "PFD";
    press.control = 5;
    EXPECT_EQ(readAction(R"({"do":"press","board":"PFD","control":5})"), press);
    CockpitAction turn = press;
    turn.kind = CockpitActionKind::Turn;
    turn.detents = -3;
    turn.speed = 4;
    EXPECT_EQ(readAction(R"({"do":"turn","board":"PFD","control":5,"detents":-3,"speed":4})"), turn);
    EXPECT_EQ(readAction(R"({"do":"release","board":"MFD","control":65535})").control, 65535);
    EXPECT_EQ(readAction(R"({"do":"unplug","board":"MFD"})").kind, CockpitActionKind::Unplug);
}

TEST(CockpitAction, LeavesTheSimulatorsCommandToItsReader) {
    CockpitAction control;
    control.kind = CockpitActionKind::ControlSimulator;
    control.command = "battery off";
    EXPECT_EQ(readAction(R"({"do":"sim","command":"battery off"})"), control);
}

TEST(CockpitAction, KnowsWhomItConcerns) {
    EXPECT_TRUE(concernsBoard(CockpitActionKind::Press));
    EXPECT_TRUE(concernsBoard(CockpitActionKind::Unplug));
    EXPECT_FALSE(concernsBoard(CockpitActionKind::ControlSimulator));
    EXPECT_FALSE(concernsBoard(readAction(R"({"do":"stop-bridge"})").kind));
}

TEST(CockpitAction, RefusesAnUnknownOne) {
    EXPECT_EQ(failureOf("{}"), "unknown action \"\"");
    EXPECT_EQ(failureOf(R"({"do":"explode"})"), "unknown action \"explode\"");
    EXPECT_EQ(failureOf(R"({"do":5})"), "unknown action \"\"");
    EXPECT_EQ(failureOf("[]"), "unknown action \"\"");
}

TEST(CockpitAction, RefusesOneThatLacksAMember) {
    EXPECT_EQ(failureOf(R"({"do":"press","control":5})"), "\"board\" is missing");
    EXPECT_EQ(failureOf(R"({"do":"plug","board":""})"), "\"board\" is missing");
    EXPECT_EQ(failureOf(R"({"do":"press","board":"PFD"})"), "\"control\" is missing or out of its range");
    EXPECT_EQ(failureOf(R"({"do":"sim"})"), "\"command\" is missing");
    EXPECT_EQ(failureOf(R"({"do":"sim","command":1})"), "\"command\" is missing");
}

TEST(CockpitAction, RefusesNumbersOutOfTheirRange) {
    const std::string range = " is missing or out of its range";
    for (const char* number : {"-1", "65536", "1.5", "\"5\"", "1e300"}) {
        EXPECT_EQ(failureOf(std::string(R"({"do":"press","board":"PFD","control":)").append(number).append("}")),
                  "\"control\"" + range)
            << number;
    }
    EXPECT_EQ(failureOf(R"({"do":"turn","board":"PFD","control":5,"detents":128,"speed":1})"), "\"detents\"" + range);
    EXPECT_EQ(failureOf(R"({"do":"turn","board":"PFD","control":5,"detents":-129,"speed":1})"), "\"detents\"" + range);
    EXPECT_EQ(failureOf(R"({"do":"turn","board":"PFD","control":5,"detents":1,"speed":256})"), "\"speed\"" + range);
}
