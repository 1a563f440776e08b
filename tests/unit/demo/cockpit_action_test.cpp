#include "companion/demo/cockpit_action.h"

#include <gtest/gtest.h>

namespace {

CockpitAction readAction(const std::string& json) {
    CockpitAction action;
    std::string error;
    EXPECT_TRUE(readCockpitAction(JsonParser::parse(json).value, action, error)) << json << ": " << error;
    return action;
}

} // namespace

TEST(CockpitAction, ReadsTheMembersOfItsKind) {
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
    EXPECT_EQ(readAction(R"({"do":"sim","command":"battery off"})").command, "battery off");
}

TEST(CockpitAction, ConcernsABoardOrTheWholeCockpit) {
    EXPECT_TRUE(concernsBoard(CockpitActionKind::Press));
    EXPECT_TRUE(concernsBoard(CockpitActionKind::Unplug));
    EXPECT_FALSE(concernsBoard(CockpitActionKind::ControlSimulator));
    EXPECT_FALSE(concernsBoard(readAction(R"({"do":"stop-bridge"})").kind));
}

TEST(CockpitAction, RefusalSaysWhatIsWrong) {
    struct Case {
        const char* json;
        const char* error;
    };
    const Case cases[] = {
        {"{}", "unknown action \"\""},
        {R"({"do":"explode"})", "unknown action \"explode\""},
        {R"({"do":5})", "unknown action \"\""},
        {"[]", "unknown action \"\""},
        {R"({"do":"press","control":5})", "\"board\" is missing"},
        {R"({"do":"plug","board":""})", "\"board\" is missing"},
        {R"({"do":"sim"})", "\"command\" is missing"},
        {R"({"do":"sim","command":1})", "\"command\" is missing"},
        {R"({"do":"press","board":"P"})", "\"control\" is missing or out of its range"},
        {R"({"do":"press","board":"P","control":-1})", "\"control\" is missing or out of its range"},
        {R"({"do":"press","board":"P","control":65536})", "\"control\" is missing or out of its range"},
        {R"({"do":"press","board":"P","control":1.5})", "\"control\" is missing or out of its range"},
        {R"({"do":"press","board":"P","control":"5"})", "\"control\" is missing or out of its range"},
        {R"({"do":"press","board":"P","control":1e300})", "\"control\" is missing or out of its range"},
        {R"({"do":"turn","board":"P","control":5,"detents":128})", "\"detents\" is missing or out of its range"},
        {R"({"do":"turn","board":"P","control":5,"detents":-129})", "\"detents\" is missing or out of its range"},
        {R"({"do":"turn","board":"P","control":5,"detents":1,"speed":256})",
         "\"speed\" is missing or out of its range"},
    };
    for (const Case& one : cases) {
        CockpitAction action;
        std::string error;
        EXPECT_FALSE(readCockpitAction(JsonParser::parse(one.json).value, action, error)) << one.json;
        EXPECT_EQ(error, one.error) << one.json;
    }
}
