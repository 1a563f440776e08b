#include "simulation/cockpit/desk_action.h"

#include <gtest/gtest.h>

namespace {

DeskAction readAction(const std::string& json) {
    DeskAction action;
    std::string error;
    EXPECT_TRUE(readDeskAction(JsonParser::parse(json).value, action, error)) << json << ": " << error;
    return action;
}

std::string failureOf(const std::string& json) {
    DeskAction action;
    std::string error;
    EXPECT_FALSE(readDeskAction(JsonParser::parse(json).value, action, error)) << json;
    return error;
}

} // namespace

TEST(DeskAction, ReadsWhatAHandDoes) {
    DeskAction press;
    press.deed = DeskDeed::Press;
    press.board = "PFD";
    press.control = 5;
    EXPECT_EQ(readAction(R"({"do":"press","board":"PFD","control":5})"), press);
    DeskAction turn = press;
    turn.deed = DeskDeed::Turn;
    turn.detents = -3;
    turn.speed = 4;
    EXPECT_EQ(readAction(R"({"do":"turn","board":"PFD","control":5,"detents":-3,"speed":4})"), turn);
    EXPECT_EQ(readAction(R"({"do":"release","board":"MFD","control":65535})").control, 65535);
    EXPECT_EQ(readAction(R"({"do":"unplug","board":"MFD"})").deed, DeskDeed::Unplug);
}

TEST(DeskAction, ReadsWhatHappensToTheSimulator) {
    EXPECT_TRUE(readAction(R"({"do":"battery","on":true})").on);
    EXPECT_FALSE(readAction(R"({"do":"refuse-sessions","on":false})").on);
    EXPECT_EQ(readAction(R"({"do":"light","percent":100})").percent, 100);
    for (const char* name : {"start-simulator", "quit-simulator", "crash-simulator", "drop-sessions"}) {
        const DeskAction action = readAction(std::string(R"({"do":")").append(name).append("\"}"));
        EXPECT_TRUE(concernsSimulator(action.deed)) << name;
        EXPECT_FALSE(concernsBoard(action.deed)) << name;
    }
}

TEST(DeskAction, KnowsWhomItConcerns) {
    EXPECT_TRUE(concernsBoard(DeskDeed::Press));
    EXPECT_TRUE(concernsBoard(DeskDeed::Unplug));
    EXPECT_TRUE(concernsSimulator(DeskDeed::SetLight));
    EXPECT_FALSE(concernsSimulator(DeskDeed::StartBridge));
    EXPECT_FALSE(concernsSimulator(DeskDeed::Unplug));
    EXPECT_FALSE(concernsBoard(readAction(R"({"do":"stop-bridge"})").deed));
}

TEST(DeskAction, RefusesAnUnknownOne) {
    EXPECT_EQ(failureOf("{}"), "unknown action \"\"");
    EXPECT_EQ(failureOf(R"({"do":"explode"})"), "unknown action \"explode\"");
    EXPECT_EQ(failureOf(R"({"do":5})"), "unknown action \"\"");
    EXPECT_EQ(failureOf("[]"), "unknown action \"\"");
}

TEST(DeskAction, RefusesOneThatLacksAMember) {
    EXPECT_EQ(failureOf(R"({"do":"press","control":5})"), "\"board\" is missing");
    EXPECT_EQ(failureOf(R"({"do":"plug","board":""})"), "\"board\" is missing");
    EXPECT_EQ(failureOf(R"({"do":"press","board":"PFD"})"), "\"control\" is missing or out of its range");
    EXPECT_EQ(failureOf(R"({"do":"battery"})"), "\"on\" is missing");
    EXPECT_EQ(failureOf(R"({"do":"battery","on":1})"), "\"on\" is missing");
}

TEST(DeskAction, RefusesNumbersOutOfTheirRange) {
    const std::string range = " is missing or out of its range";
    for (const char* number : {"-1", "65536", "1.5", "\"5\"", "1e300"}) {
        EXPECT_EQ(failureOf(std::string(R"({"do":"press","board":"PFD","control":)").append(number).append("}")),
                  "\"control\"" + range)
            << number;
    }
    EXPECT_EQ(failureOf(R"({"do":"turn","board":"PFD","control":5,"detents":128,"speed":1})"), "\"detents\"" + range);
    EXPECT_EQ(failureOf(R"({"do":"turn","board":"PFD","control":5,"detents":-129,"speed":1})"), "\"detents\"" + range);
    EXPECT_EQ(failureOf(R"({"do":"turn","board":"PFD","control":5,"detents":1,"speed":256})"), "\"speed\"" + range);
    EXPECT_EQ(failureOf(R"({"do":"light","percent":101})"), "\"percent\"" + range);
    EXPECT_EQ(failureOf(R"({"do":"light","percent":-1})"), "\"percent\"" + range);
}
