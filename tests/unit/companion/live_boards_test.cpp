#include "companion/live/live_boards.h"

#include "companion/live/live_text.h"
#include "simulation/boards/virtual_hid_bus.h"
#include "tests/support/wait_until.h"
#include "tests/unit/mapping/mapping_settings.h"

#include <memory>
#include <mutex>

namespace {

class LiveBoardsTest : public testing::Test, protected MappingSettings {
protected:
    LiveBoardsTest() {
        addControl(20, "AP", R"("PRESS":{"":"MASTER"})");
        config.hid.scanIntervalMs = 10;
        config.outputs.devices = {{name, -1, "PFD", ""}};
    }

    bool start() {
        std::string error;
        return live.start(configuration(),
                          {.arrived = [this](const LiveBoard& b) { add("came " + b.name + ' ' + b.configuredRole); },
                           .left = [this](const LiveBoard& b) { add("left " + b.name); },
                           .reported = [this](const LiveReport& report) { add(textOf(report)); }},
                          error);
    }

    std::shared_ptr<const BridgeConfiguration> configuration() const {
        return std::make_shared<BridgeConfiguration>(BridgeConfiguration{config, buttons, eventMap, ""});
    }

    static std::string textOf(const LiveReport& report) {
        return report.event ? actionText(*report.event) + ' ' + answerText(*report.event) : report.problem;
    }

    void add(const std::string& line) {
        const std::lock_guard lock(mutex);
        lines.push_back(line);
    }

    std::vector<std::string> seen() {
        const std::lock_guard lock(mutex);
        return lines;
    }

    bool waitForCount(std::size_t count) {
        return waitUntil([&] { return seen().size() >= count; });
    }

    const std::string name = "0000000000000001";
    std::mutex mutex;
    std::vector<std::string> lines;
    VirtualHidBus bus;
    std::shared_ptr<VirtualBoard> board = std::make_shared<VirtualBoard>();
    LiveBoards live{bus.transport(), systemPlatform().host};
};

} // namespace

TEST_F(LiveBoardsTest, ReportsBetweenArrivalAndDeparture) {
    ASSERT_TRUE(start());
    bus.plug(board);
    ASSERT_TRUE(waitForCount(1));
    board->press(20);
    board->sendRaw(std::vector<std::uint8_t>{1, 2});
    // A board that is found gone is no longer read.
    ASSERT_TRUE(waitForCount(3));
    bus.unplug(board);
    ASSERT_TRUE(waitForCount(4));
    EXPECT_EQ(seen(), (std::vector<std::string>{"came " + name + " PFD", "press sends MASTER", "Invalid report length",
                                                "left " + name}));
    EXPECT_TRUE(board->outputs().empty());
}

TEST_F(LiveBoardsTest, BoardThatComesBackAtOnceLeavesFirst) {
    bus.plug(board);
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitForCount(1));
    bus.replug(board);
    ASSERT_TRUE(waitUntil([&] {
        board->press(20);
        return seen().size() >= 4;
    }));
    live.stop();
    const std::vector<std::string> all = seen();
    EXPECT_EQ(std::vector(all.begin() + 1, all.begin() + 4),
              (std::vector<std::string>{"left " + name, "came " + name + " PFD", "press sends MASTER"}));
}

TEST_F(LiveBoardsTest, StopDeliversWhatWasRead) {
    bus.plug(board);
    ASSERT_TRUE(start());
    for (int i = 0; i < 30; ++i) {
        board->press(20);
    }
    ASSERT_TRUE(waitUntil([&] { return bus.reads().size() >= 30; }));
    live.stop();
    EXPECT_EQ(seen().size(), 31U);
    EXPECT_EQ(bus.openHandleCount(), 0U);
}

TEST_F(LiveBoardsTest, DecodesByTheLatestConfiguration) {
    bus.plug(board);
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitForCount(1));
    addControl(21, "FD", R"("PRESS":{"":"DIRECTOR"})");
    live.setConfiguration(configuration());
    board->press(21);
    ASSERT_TRUE(waitForCount(2));
    EXPECT_EQ(seen().back(), "press sends DIRECTOR");
    EXPECT_EQ(live.boards().size(), 1U);
}

TEST_F(LiveBoardsTest, RefusesInvalidIdsAndCanBeStartedAgain) {
    config.hid.vid = "none";
    EXPECT_FALSE(start());
    config.hid.vid = "1234";
    ASSERT_TRUE(start());
    live.stop();
    bus.plug(board);
    ASSERT_TRUE(start());
    EXPECT_TRUE(waitForCount(1));
}
