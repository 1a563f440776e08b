// A board that is pulled in the middle of a call: the manager goes on and connects the board again.

#include "tests/unit/hid/hid_fixture.h"

#include <functional>

namespace {

class HidManagerVanish : public HidFixture {
protected:
    HidManagerVanish() {
        HidTransport transport = bus.transport();
        transport.open = watched(transport.open);
        transport.attributes = watched(transport.attributes);
        transport.serialNumber = watched(transport.serialNumber);
        transport.getFeature = watched(transport.getFeature);
        transport.makeReader = watched(transport.makeReader);
        transport.cancelReads = watched(transport.cancelReads);
        transport.write = watched(transport.write);
        transport.setOutputReport = watched(transport.setOutputReport);
        transport.close = watched(transport.close);
        useTransport(transport);
        start();
    }
    ~HidManagerVanish() override { end(); }

    /// Connects the board, makes every call and ends the session. The board is pulled on the way into the call of that
    /// number. False if there are fewer calls.
    bool pullAtCall(int number) {
        remaining = number;
        manager->sendSimStatus(number % 2 == 0);
        bus.plug(board);
        manager->scanDevices();
        manager->sendLedControl(firstName, -1, {1, 9, 0, 0, 0});
        manager->scanDevices();
        manager->sendBootselCommand();
        manager->scanDevices();
        return std::exchange(remaining, 0) <= 0;
    }

    /// Calls until the board is pulled; 0 or below for none.
    int remaining = 0;

private:
    template <typename Result, typename... Arguments>
    std::function<Result(Arguments...)> watched(std::function<Result(Arguments...)> next) {
        return [this, next](Arguments... arguments) -> Result {
            if (--remaining == 0) {
                bus.unplug(board);
            }
            return next(std::forward<Arguments>(arguments)...);
        };
    }
};

TEST_F(HidManagerVanish, IsSurvivedAtEachCall) {
    int number = 1;
    while (pullAtCall(number)) {
        EXPECT_FALSE(manager->hasDevices()) << number;
        bus.plug(board);
        manager->scanDevices();
        ASSERT_EQ(manager->listDevices().size(), 1U) << number;
        board->press(7);
        EXPECT_TRUE(events.waitForCount(static_cast<std::size_t>(number))) << number;
        EXPECT_TRUE(manager->sendLedControl(firstName, -1, {1, 50, 0, 0, 0}));
        EXPECT_EQ(board->led(), (LedCommand{1, 50, 0, 0, 0})) << number;
        bus.unplug(board);
        manager->scanDevices();
        ++number;
    }
    EXPECT_GT(number, 15);
}

} // namespace
