// A device of another vendor that hangs when it is opened, as each pass does to ask for its ids.

#include "tests/support/gate.h"
#include "tests/unit/hid/hid_fixture.h"

#include <thread>

namespace {

using HidManagerForeignDevice = HidFixture;

TEST_F(HidManagerForeignDevice, ThatHangsOnOpenLeavesOurBoardWorking) {
    Gate gate;
    std::string foreignPath;
    HidTransport transport = bus.transport();
    transport.open = [&, open = transport.open](const std::string& path, HidAccess access, HidMode mode) {
        if (path == foreignPath) {
            gate.pass();
        }
        return open(path, access, mode);
    };
    useTransport(transport);
    bus.plug(board);
    start();
    EXPECT_TRUE(waitForReader());
    foreignPath = bus.plug(makeBoard(9), "foreign");
    std::thread pass([this] { manager->scanDevices(); });
    EXPECT_TRUE(gate.waitForArrival());
    board->press(3);
    EXPECT_TRUE(events.waitForCount(1));
    manager->sendSimStatus(true);
    EXPECT_TRUE(manager->sendLedControl(firstName, 0, {1, 20, 0, 0, 0}));
    EXPECT_EQ(board->led(), (LedCommand{1, 20, 0, 0, 0}));
    EXPECT_EQ(devices(), (Devices{{firstName, 0}}));
    gate.open();
    pass.join();
    end();
}

} // namespace
