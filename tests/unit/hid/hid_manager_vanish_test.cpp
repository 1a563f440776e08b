// A board that is pulled in the middle of a call, whichever it is: the manager lives on and takes the board again.

#include "tests/unit/hid/hid_fixture.h"

#include <atomic>
#include <functional>

namespace {

/// Pulls a board on the way into the next call of one kind, or a later one by its number.
class Vanishing {
public:
    Vanishing(VirtualHidBus& hidBus, std::shared_ptr<VirtualBoard> pulledBoard)
        : bus(hidBus), board(std::move(pulledBoard)) {}

    void armFor(HidCall call, int number = 1) {
        armed = call;
        remaining = number;
    }
    bool hasHappened() const { return remaining == 0; }

    HidTransport watch(HidTransport transport) {
        transport.open = before(HidCall::Open, transport.open);
        transport.attributes = before(HidCall::Attributes, transport.attributes);
        transport.serialNumber = before(HidCall::SerialNumber, transport.serialNumber);
        transport.getFeature = before(HidCall::GetFeature, transport.getFeature);
        transport.makeReader = before(HidCall::MakeReader, transport.makeReader);
        transport.cancelReads = before(HidCall::CancelReads, transport.cancelReads);
        transport.write = before(HidCall::Write, transport.write);
        transport.setOutputReport = before(HidCall::SetOutputReport, transport.setOutputReport);
        transport.close = before(HidCall::Close, transport.close);
        return transport;
    }

private:
    template <typename Result, typename... Arguments>
    std::function<Result(Arguments...)> before(HidCall call, std::function<Result(Arguments...)> next) {
        return [this, call, next](Arguments... arguments) -> Result {
            if (call == armed && remaining > 0 && --remaining == 0) {
                bus.unplug(board);
            }
            return next(std::forward<Arguments>(arguments)...);
        };
    }

    VirtualHidBus& bus;
    const std::shared_ptr<VirtualBoard> board;
    std::atomic<HidCall> armed{HidCall::Enumerate};
    std::atomic<int> remaining{0};
};

class HidManagerVanish : public HidFixture {
protected:
    HidManagerVanish() {
        manager = std::make_unique<HidManager>(vanishing.watch(bus.transport()), host.record());
        start();
    }
    ~HidManagerVanish() override { end(); }

    /// Whatever has happened, one pass ends the board's session, and putting it back makes a working one.
    void expectRecovery() {
        EXPECT_TRUE(vanishing.hasHappened());
        manager->scanDevices();
        EXPECT_FALSE(manager->hasDevices());
        bus.plug(board);
        manager->scanDevices();
        ASSERT_EQ(manager->listDevices().size(), 1U);
        board->press(7);
        EXPECT_TRUE(events.waitForCount(1));
        EXPECT_TRUE(manager->sendLedControl(firstName, -1, {1, 50, 0, 0, 0}));
        EXPECT_EQ(board->led(), (LedCommand{1, 50, 0, 0, 0}));
    }

    std::shared_ptr<VirtualBoard> board = makeBoard(1);
    Vanishing vanishing{bus, board};
};

struct VanishingMoment {
    const char* name;
    HidCall call;
    int number;
};

class HidManagerVanishAtConnection : public HidManagerVanish, public testing::WithParamInterface<VanishingMoment> {};

TEST_P(HidManagerVanishAtConnection, IsSurvived) {
    manager->sendSimStatus(true);
    bus.plug(board);
    vanishing.armFor(GetParam().call, GetParam().number);
    manager->scanDevices();
    expectRecovery();
}

INSTANTIATE_TEST_SUITE_P(, HidManagerVanishAtConnection,
                         testing::Values(VanishingMoment{"AtTheProbesOpening", HidCall::Open, 1},
                                         VanishingMoment{"AtTheProbesQuestion", HidCall::Attributes, 1},
                                         VanishingMoment{"AtTheProbesClosing", HidCall::Close, 1},
                                         VanishingMoment{"AtTheReadersOpening", HidCall::Open, 2},
                                         VanishingMoment{"AtTheWritersOpening", HidCall::Open, 3},
                                         VanishingMoment{"AtItsSerialNumber", HidCall::SerialNumber, 1},
                                         VanishingMoment{"AtItsDeviceInfo", HidCall::GetFeature, 1},
                                         VanishingMoment{"AtItsProtocolInfo", HidCall::GetFeature, 2},
                                         VanishingMoment{"AtTheReplayOfTheStatus", HidCall::Write, 1},
                                         VanishingMoment{"AtTheMakingOfItsReader", HidCall::MakeReader, 1}),
                         [](const auto& moment) { return std::string(moment.param.name); });

class HidManagerVanishInSession : public HidManagerVanish {
protected:
    HidManagerVanishInSession() {
        bus.plug(board);
        manager->scanDevices();
        EXPECT_TRUE(waitForReader(board));
        log.clear();
    }

    void expectWarning(const std::string& text) {
        EXPECT_EQ(log.linesWith("[WARN] " + text).size(), 1U) << text;
        expectRecovery();
    }
};

TEST_F(HidManagerVanishInSession, AtAStatusReportIsWarnedOf) {
    vanishing.armFor(HidCall::Write);
    manager->sendSimStatus(true);
    expectWarning("HID sim_status write failed for 0000000000000001 (err=");
}

TEST_F(HidManagerVanishInSession, AtALightCommandIsWarnedOfAndTrue) {
    vanishing.armFor(HidCall::Write);
    EXPECT_TRUE(manager->sendLedControl(firstName, -1, {1, 9, 0, 0, 0}));
    expectWarning("HID led_ctl write failed for 0000000000000001 (err=");
}

TEST_F(HidManagerVanishInSession, AtTheBootselWriteFailsBothWays) {
    vanishing.armFor(HidCall::Write);
    manager->sendBootselCommand();
    EXPECT_TRUE(log.has("[WARN] No HID device accepted BOOTSEL command"));
    expectWarning("Failed to send BOOTSEL command to 0000000000000001 (WriteFile err=1167, bytes=0, "
                  "HidD_SetOutputReport err=1167)");
}

TEST_F(HidManagerVanishInSession, AtTheBootselFallBackIsWarnedOf) {
    bus.setFaults(board, {.writeCount = 31});
    vanishing.armFor(HidCall::SetOutputReport);
    manager->sendBootselCommand();
    bus.setFaults(board, {});
    expectWarning("Failed to send BOOTSEL command to 0000000000000001 (WriteFile err=0, bytes=31, "
                  "HidD_SetOutputReport err=");
}

TEST_F(HidManagerVanishInSession, AtItsOwnProbeEndsTheSession) {
    vanishing.armFor(HidCall::Open);
    manager->scanDevices();
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device disconnected: 0000000000000001"}));
    expectRecovery();
}

TEST_F(HidManagerVanishInSession, WhileItsReadsAreCancelledIsADisconnection) {
    vanishing.armFor(HidCall::CancelReads);
    restart();
    EXPECT_TRUE(log.has("[INFO] HID device disconnected: 0000000000000001"));
    expectRecovery();
}

} // namespace
