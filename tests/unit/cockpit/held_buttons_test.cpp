#include "simulation/cockpit/held_buttons.h"

#include "tests/support/wait_until.h"

#include <gtest/gtest.h>

namespace {

/// Boards whose reports are noted as "value control mode".
class HeldButtonsTest : public testing::Test {
protected:
    void SetUp() override {
        for (VirtualBoard* const board : {&first, &second}) {
            board->powerOn([this](std::span<const std::uint8_t> report) { note(report); });
        }
    }

    std::vector<std::string> sent() {
        const std::lock_guard lock(mutex);
        return reports;
    }

    std::vector<std::string> told() {
        const std::lock_guard lock(mutex);
        return callbacks;
    }

    VirtualBoard first;
    VirtualBoard second;

private:
    std::mutex mutex;
    std::vector<std::string> reports;
    std::vector<std::string> callbacks;

    void note(std::span<const std::uint8_t> report) {
        const std::lock_guard lock(mutex);
        reports.push_back(std::to_string(report[6])
                              .append(" ")
                              .append(std::to_string(report[4]))
                              .append(" ")
                              .append(std::to_string(report[8])));
    }

protected:
    HeldButtons buttons{[this](const HeldButtons::Button& button, std::string_view report) {
        const std::lock_guard lock(mutex);
        callbacks.push_back(std::string(report).append(" ").append(std::to_string(button.controlId)));
    }};
};

} // namespace

TEST_F(HeldButtonsTest, SendPressAndRelease) {
    buttons.press({&first, 5, 1});
    EXPECT_EQ(buttons.heldOn(first), std::vector<std::uint16_t>{5});
    EXPECT_TRUE(buttons.heldOn(second).empty());
    buttons.release({&first, 5, 1});
    EXPECT_EQ(sent(), (std::vector<std::string>{"1 5 1", "0 5 1"}));
    EXPECT_EQ(told(), (std::vector<std::string>{"press 5", "release 5"}));
    EXPECT_TRUE(buttons.heldOn(first).empty());
}

TEST_F(HeldButtonsTest, RepeatAHoldUntilTheRelease) {
    const auto begin = std::chrono::steady_clock::now();
    buttons.press({&first, 7, 0});
    ASSERT_TRUE(waitUntil([this] { return sent().size() >= 4; }));
    // Three holds: not before their time.
    EXPECT_GE(std::chrono::steady_clock::now() - begin, HeldButtons::firstHold + 2 * HeldButtons::holdPeriod);
    buttons.release({&first, 7, 0});
    const std::vector<std::string> all = sent();
    EXPECT_EQ(all.front(), "1 7 0");
    EXPECT_EQ(all[1], "2 7 0");
    EXPECT_EQ(all[3], "2 7 0");
    EXPECT_EQ(all.back(), "0 7 0");
    EXPECT_EQ(told()[1], "hold 7");
}

TEST_F(HeldButtonsTest, TakeASecondPressAndALoneReleaseForNothing) {
    buttons.release({&first, 5, 0});
    buttons.press({&first, 5, 0});
    buttons.press({&first, 5, 0});
    buttons.release({&first, 5, 0});
    buttons.release({&first, 5, 0});
    EXPECT_EQ(sent(), (std::vector<std::string>{"1 5 0", "0 5 0"}));
}

TEST_F(HeldButtonsTest, HoldButtonsOfTwoBoardsSideBySide) {
    buttons.press({&first, 5, 0});
    buttons.press({&second, 5, 1});
    buttons.release({&first, 5, 0});
    EXPECT_EQ(buttons.heldOn(second), std::vector<std::uint16_t>{5});
    ASSERT_TRUE(waitUntil([this] { return sent().back() == "2 5 1"; }));
}

TEST_F(HeldButtonsTest, ReleaseAllAtOnce) {
    buttons.press({&first, 5, 0});
    buttons.press({&first, 6, 0});
    buttons.releaseAll();
    EXPECT_TRUE(buttons.heldOn(first).empty());
    EXPECT_EQ(sent(), (std::vector<std::string>{"1 5 0", "1 6 0", "0 5 0", "0 6 0"}));
}

TEST_F(HeldButtonsTest, ReleaseThoseOfOneBoardAndLeaveTheOthersDown) {
    buttons.press({&first, 5, 0});
    buttons.press({&second, 6, 1});
    buttons.releaseAllOn(first);
    EXPECT_TRUE(buttons.heldOn(first).empty());
    EXPECT_EQ(buttons.heldOn(second), std::vector<std::uint16_t>{6});
    EXPECT_EQ(sent(), (std::vector<std::string>{"1 5 0", "1 6 1", "0 5 0"}));
}

TEST(HeldButtonsEnd, ReleasesWhatIsStillDown) {
    VirtualBoard board;
    std::vector<int> values;
    board.powerOn([&values](std::span<const std::uint8_t> report) { values.push_back(report[6]); });
    {
        HeldButtons buttons([](const HeldButtons::Button&, std::string_view) {});
        buttons.press({&board, 5, 0});
    }
    EXPECT_EQ(values, (std::vector<int>{1, 0}));
}
