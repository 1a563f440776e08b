// A board that is pulled in the middle of a call: the manager goes on and connects the board again.

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

struct VanishingMoment {
    const char* name;
    HidCall call;
    int number;
};

class HidManagerVanish : public HidFixture, public testing::WithParamInterface<VanishingMoment> {
protected:
    HidManagerVanish() {
        useTransport(vanishing.watch(bus.transport()));
        start();
    }
    ~HidManagerVanish() override { end(); }

    Vanishing vanishing{bus, board};
};

TEST_P(HidManagerVanish, IsSurvived) {
    manager->sendSimStatus(true);
    bus.plug(board);
    vanishing.armFor(GetParam().call, GetParam().number);
    manager->scanDevices();
    // The calls for a session that has been made.
    manager->sendLedControl(firstName, -1, {1, 9, 0, 0, 0});
    manager->scanDevices();
    manager->sendBootselCommand();
    manager->scanDevices();
    EXPECT_TRUE(vanishing.hasHappened());
    EXPECT_FALSE(manager->hasDevices());
    bus.plug(board);
    manager->scanDevices();
    ASSERT_EQ(manager->listDevices().size(), 1U);
    board->press(7);
    EXPECT_TRUE(events.waitForCount(1));
    EXPECT_TRUE(manager->sendLedControl(firstName, -1, {1, 50, 0, 0, 0}));
    EXPECT_EQ(board->led(), (LedCommand{1, 50, 0, 0, 0}));
}

INSTANTIATE_TEST_SUITE_P(, HidManagerVanish,
                         testing::Values(VanishingMoment{"AtTheProbesOpening", HidCall::Open, 1},
                                         VanishingMoment{"AtTheProbesQuestion", HidCall::Attributes, 1},
                                         VanishingMoment{"AtTheProbesClosing", HidCall::Close, 1},
                                         VanishingMoment{"AtTheReadersOpening", HidCall::Open, 2},
                                         VanishingMoment{"AtTheWritersOpening", HidCall::Open, 3},
                                         VanishingMoment{"AtItsSerialNumber", HidCall::SerialNumber, 1},
                                         VanishingMoment{"AtItsDeviceInfo", HidCall::GetFeature, 1},
                                         VanishingMoment{"AtItsProtocolInfo", HidCall::GetFeature, 2},
                                         VanishingMoment{"AtTheReplayOfTheStatus", HidCall::Write, 1},
                                         VanishingMoment{"AtTheMakingOfItsReader", HidCall::MakeReader, 1},
                                         VanishingMoment{"AtALightCommand", HidCall::Write, 2},
                                         VanishingMoment{"AtItsOwnProbe", HidCall::Open, 4},
                                         VanishingMoment{"AtTheBootselWrite", HidCall::Write, 3},
                                         VanishingMoment{"WhileItsReadsAreCancelled", HidCall::CancelReads, 1}),
                         [](const auto& moment) { return std::string(moment.param.name); });

} // namespace
