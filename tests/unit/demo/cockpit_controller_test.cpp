#include "companion/demo/cockpit_controller.h"

#include "tests/support/wait_until.h"

#include <gtest/gtest.h>

namespace {

/// A controller with the sample set, whose feed is read to the end by each question. The browser tests show the rest of
/// what the page can do.
class CockpitControllerTest : public testing::Test {
protected:
    void SetUp() override {
        std::string error;
        ASSERT_TRUE(loadCockpitConfiguration("", configuration, error)) << error;
        controller.emplace(configuration, RigSides{});
        ASSERT_TRUE(controller->start(error)) << error;
        controller->openTab("tab");
        // The first light and the registration reach the feed in either order.
        ASSERT_TRUE(cameUp("MF.SimVars.Add.") && cameUp(R"("text": "steady 80"})"));
        received.clear();
    }

    bool act(const std::string& action) {
        failure.clear();
        return controller->act(JsonParser::parse(action).value, "tab", failure);
    }

    bool control(const std::string& command) { return act(R"({"do":"sim","command":")" + command + "\"}"); }

    /// Waits until the feed has the text after what was found before, and drops the feed up to its end.
    bool comes(const std::string& text) {
        const bool came = cameUp(text);
        if (came) {
            received.erase(0, received.find(text) + text.size());
        }
        return came;
    }

    /// The same, but drops nothing.
    bool cameUp(const std::string& text) {
        const auto found = [&] {
            std::string events;
            controller->feed().next(cursor, std::chrono::milliseconds(0), events);
            received += events;
            return received.find(text) != std::string::npos;
        };
        return waitUntil(found, std::chrono::seconds(60));
    }

    CockpitConfiguration configuration;
    std::optional<CockpitController> controller;
    EventFeed::Cursor cursor;
    std::string received;
    std::string failure;
};

} // namespace

TEST_F(CockpitControllerTest, SendsAPressThroughTheBridgeToTheSimulator) {
    EXPECT_TRUE(act(R"({"do":"press","board":"PFD","control":5})"));
    EXPECT_TRUE(comes(R"("board": "PFD", "control": 5, "detents": 0, "report": "press")"));
    EXPECT_TRUE(comes("rpn (>K:AP_MASTER)"));
    EXPECT_TRUE(act(R"({"do":"release","board":"PFD","control":5})"));
    EXPECT_TRUE(comes("action=BUTTON_RELEASE role=PFD(BUTTON) controlId=5(AP)"));
}

TEST_F(CockpitControllerTest, ReportsTheStateOfEachControlThatThePageShows) {
    EXPECT_TRUE(control("refuse on"));
    EXPECT_TRUE(control("light 35"));
    EXPECT_TRUE(control("silent on"));
    EXPECT_TRUE(
        comes(R"("settings": {"battery": "on", "error": "off", "light": "35", "refuse": "on", "silent": "on"})"));
}

TEST_F(CockpitControllerTest, WorksAgainAfterTheModuleWasSilent) {
    EXPECT_TRUE(control("silent on"));
    EXPECT_TRUE(control("drop"));
    EXPECT_TRUE(comes("MF.Clients.Add."));
    EXPECT_TRUE(control("silent off"));
    EXPECT_TRUE(control("drop"));
    EXPECT_TRUE(comes("MF.SimVars.Add."));
}

TEST_F(CockpitControllerTest, WaitsForABridgeThatIsEnding) {
    EXPECT_TRUE(act(R"({"do":"stop-bridge"})"));
    EXPECT_TRUE(act(R"({"do":"start-bridge"})"));
    EXPECT_TRUE(comes("Application run loop stopped"));
    EXPECT_TRUE(comes("MF.SimVars.Add."));
}

TEST_F(CockpitControllerTest, RefusesWhatIsNotThere) {
    EXPECT_FALSE(act(R"({"do":"press","board":"AUDIO","control":5})"));
    EXPECT_EQ(failure, "there is no board AUDIO");
    EXPECT_FALSE(act(R"({"do":"sing"})"));
    EXPECT_EQ(failure, "unknown action \"sing\"");
    EXPECT_FALSE(control("sing"));
    EXPECT_EQ(failure, "Unknown command: sing");
    EXPECT_FALSE(control("battery maybe"));
    EXPECT_EQ(failure, "Usage: battery on|off");
}

TEST(CockpitControllerStart, ShowsTheExitCodeOfABridgeThatRefusesItsConfiguration) {
    CockpitConfiguration configuration;
    std::string error;
    ASSERT_TRUE(loadCockpitConfiguration("", configuration, error)) << error;
    configuration.files["config.json"] = R"({"hid": {"vid": "1234", "pid": "none"}})";
    CockpitController controller(configuration, RigSides{});
    ASSERT_TRUE(controller.start(error)) << error;
    EventFeed::Cursor cursor;
    std::string received;
    EXPECT_TRUE(waitUntil([&] {
        std::string events;
        controller.feed().next(cursor, std::chrono::milliseconds(0), events);
        received += events;
        return received.find(R"("bridge": {"exitCode": "1", "running": false})") != std::string::npos;
    })) << received;
}
