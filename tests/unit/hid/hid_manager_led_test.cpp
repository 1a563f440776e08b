#include "tests/unit/hid/hid_fixture.h"

#include <tuple>

namespace {

constexpr LedCommand steady{1, 0x80, 0, 0, 0};
constexpr LedCommand flash{3, 0, 4, 500, 200};

class HidManagerLed : public HidTwoBoards {
public:
    bool light(const LedCommand& command) { return manager->sendLedControl(firstName, 0, command); }
};

} // namespace

TEST_F(HidManagerLed, GoesToTheNamedBoardElseToThatOfTheIndex) {
    startWithBoards();
    const std::vector boards{first, second, plugNew(0xAB)};
    manager->scanDevices();
    using Row = std::tuple<std::string, int, int>;
    std::uint8_t brightness = 0;
    // Name, index and the number of the board that gets the command, -1 for none.
    for (const auto& [name, index, target] :
         {Row{secondName, 1, 1}, Row{firstName, 1, 0}, Row{"elsewhere", 1, 1}, Row{"", 0, 0}, Row{"", -1, -1},
          Row{"elsewhere", -1, -1}, Row{"elsewhere", 3, -1}, Row{"00000000000000AB", -1, 2},
          Row{"00000000000000ab", -1, -1}, Row{"00000000000000AB ", -1, -1}}) {
        ++brightness;
        EXPECT_EQ(manager->sendLedControl(name, index, {1, brightness, 0, 0, 0}), target >= 0) << name << index;
        for (int number = 0; number < 3; ++number) {
            const auto shown = boards[static_cast<std::size_t>(number)]->led();
            EXPECT_EQ(shown && shown->brightness == brightness, number == target) << name << index;
        }
    }
    EXPECT_EQ(log.linesWith("WARN"), Lines());
    // Of two boards with one name the first path is meant.
    const auto twin = makeBoard(1);
    bus.plug(twin, "a");
    manager->scanDevices();
    EXPECT_TRUE(light(steady));
    EXPECT_EQ(twin->led(), steady);
}

TEST_F(HidManagerLed, FirstCommandAndEachChangeOfAFieldAreWrittenOnce) {
    startWithBoards();
    const std::vector<LedCommand> commands{{0, 0, 0, 0, 0}, {1, 0, 0, 0, 0},     {1, 1, 0, 0, 0},    {1, 1, 1, 0, 0},
                                           {1, 1, 1, 1, 0}, {1, 1, 1, 0x101, 0}, {1, 1, 1, 0x101, 1}};
    for (const auto& command : commands) {
        EXPECT_TRUE(light(command));
        EXPECT_TRUE(light(command));
        EXPECT_EQ(first->led(), command);
    }
    EXPECT_EQ(first->outputs().size(), commands.size());
}

TEST_F(HidManagerLed, InvalidationHasAnEqualCommandWrittenToThatBoardOnce) {
    startWithBoards();
    const auto lightBoth = [this] { return light(steady) && manager->sendLedControl(secondName, 1, steady); };
    EXPECT_TRUE(lightBoth());
    manager->invalidateLedCache("elsewhere", -1);
    manager->invalidateLedCache("elsewhere", 1);
    EXPECT_TRUE(lightBoth());
    EXPECT_TRUE(lightBoth());
    EXPECT_EQ(first->outputs().size(), 1U);
    EXPECT_EQ(second->outputs().size(), 2U);
    manager->invalidateLedCache(firstName, -1);
    EXPECT_TRUE(lightBoth());
    EXPECT_EQ(first->outputs().size(), 2U);
    EXPECT_EQ(second->outputs().size(), 2U);
}

TEST_F(HidManagerLed, FailedWriteWarnsIsTrueAndIsRepeatedOnlyAfterAChangeOrInvalidation) {
    manager->setTraceEnabled(true);
    startWithBoards();
    const Lines expected{"[WARN] HID led_ctl write failed for 0000000000000001 (err=31)",
                         "[DEBUG] HID OUT led_ctl device=0000000000000001 bytes=0 data=" + reportText("100180")};
    bus.setFaults(first, {.writeError = 31});
    EXPECT_TRUE(light(steady));
    EXPECT_TRUE(light(steady));
    EXPECT_EQ(log.lines(), expected);
    bus.setFaults(first, {});
    EXPECT_TRUE(light(steady));
    EXPECT_FALSE(first->led().has_value());
    manager->invalidateLedCache(firstName, 0);
    EXPECT_TRUE(light(steady));
    EXPECT_EQ(first->led(), steady);
    EXPECT_TRUE(light(flash));
    EXPECT_EQ(first->led(), flash);
}

TEST_F(HidManagerLed, ReplugForgetsTheCacheAndReplaysNoLight) {
    startWithBoards();
    EXPECT_TRUE(light(steady));
    bus.plug(first);
    manager->scanDevices();
    EXPECT_FALSE(first->led().has_value());
    EXPECT_TRUE(light(steady));
    EXPECT_EQ(first->led(), steady);
}
