#include "companion/setup/setup_controller.h"

#include "simulation/boards/virtual_hid_bus.h"
#include "tests/support/gate.h"
#include "tests/support/temp_folder.h"

#include <future>

namespace {

/// A controller without a configuration, with one board on a bus of its own. The browser tests show what the page does.
class SetupControllerTest : public testing::Test {
protected:
    void SetUp() override {
        platform.hid = bus.transport();
        platform.hid.write = [this, write = platform.hid.write](HidHandle handle, auto report) {
            onWrite();
            return write(handle, report);
        };
        controller.emplace(platform, SetupOptions{folder.path("config.json")});
        std::string error;
        ASSERT_TRUE(controller->start(error)) << error;
        controller->openTab("tab");
        bus.plug(board);
        ASSERT_TRUE(act(R"({"do":"ids","vendor":"1234","product":"ABCD"})")) << failure;
        ASSERT_TRUE(comes(R"("virtual":false)"));
    }

    bool act(const std::string& action) {
        failure.clear();
        return controller->act(JsonParser::parse(action).value, "tab", failure);
    }

    /// Waits until the feed has the text.
    bool comes(const std::string& text) {
        return waitUntil([&] {
            std::string events;
            controller->feed().next(cursor, std::chrono::milliseconds(0), events);
            received += events;
            return received.find(text) != std::string::npos;
        });
    }

    TempFolder folder;
    VirtualHidBus bus;
    std::shared_ptr<VirtualBoard> board = std::make_shared<VirtualBoard>();
    Platform platform = systemPlatform();
    std::function<void()> onWrite = [] {};
    std::optional<SetupController> controller;
    EventFeed::Cursor cursor;
    std::string received;
    std::string failure;
};

} // namespace

TEST_F(SetupControllerTest, ShowsAPressWhileABoardIsSlowToTakeItsLight) {
    Gate gate;
    onWrite = [&gate] { gate.pass(); };
    auto preview = std::async(std::launch::async,
                              [this] { return act(R"({"do":"preview","profile":"panel","part":"backlight"})"); });
    EXPECT_TRUE(gate.waitForArrival());
    board->press(5, 0);
    EXPECT_TRUE(comes(R"("control":5)"));
    gate.open();
    EXPECT_TRUE(preview.get()) << failure;
}

TEST_F(SetupControllerTest, HoldsAControlDownUntilItsTabIsGone) {
    EXPECT_TRUE(act(R"({"do":"addBoard"})"));
    EXPECT_TRUE(comes(R"("virtual":true)"));
    EXPECT_TRUE(act(R"({"do":"press","board":"virtual-1","control":5})")) << failure;
    EXPECT_TRUE(comes(R"("action":"HOLD")"));
    controller->closeTab("another tab");
    // A release would come before this press.
    EXPECT_TRUE(act(R"({"do":"press","board":"virtual-1","control":6})")) << failure;
    EXPECT_TRUE(comes(R"("control":6)"));
    EXPECT_EQ(received.find(R"("action":"RELEASE")"), std::string::npos);
    controller->closeTab("tab");
    EXPECT_TRUE(comes(R"("action":"RELEASE")"));
}
