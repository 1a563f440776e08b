#include "tests/unit/hid/hid_fixture.h"

namespace {

class HidManagerScan : public HidFixture {
public:
    std::vector<std::pair<std::string, int>> devices() {
        std::vector<std::pair<std::string, int>> result;
        for (const auto& device : manager->listDevices()) {
            result.emplace_back(device.deviceName, device.index);
        }
        return result;
    }

    /// Starts with no board, so that the calls of the next pass can be compared in full.
    void startEmpty() {
        start();
        bus.clearCalls();
        log.clear();
    }
};

using Devices = std::vector<std::pair<std::string, int>>;

constexpr char firstName[] = "0000000000000001";
constexpr char secondName[] = "0000000000000002";

} // namespace

TEST_F(HidManagerScan, DoesNothingBeforeStart) {
    plugNew(1);
    manager->scanDevices();
    EXPECT_EQ(bus.callTexts(), Lines());
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(HidManagerScan, ListOfNoBoardsIsEmpty) {
    start();
    EXPECT_TRUE(manager->listDevices().empty());
    EXPECT_FALSE(manager->hasDevices());
}

TEST_F(HidManagerScan, ConnectsWithTheseCallsInThisOrder) {
    startEmpty();
    plugNew(1);
    manager->scanDevices();
    EXPECT_EQ(bus.callTexts(), (Lines{
                                   "enumerate",
                                   "open port#0001 read-write synchronous: ok",
                                   "attributes port#0001: ok",
                                   "close port#0001",
                                   "open port#0001 read-write overlapped: ok",
                                   "open port#0001 read-write synchronous: ok",
                                   "serial port#0001: failed",
                                   "feature port#0001 20: ok",
                                   "feature port#0001 21: failed",
                                   "reader port#0001: ok",
                               }));
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device connected: 0000000000000001 index=0"}));
}

TEST_F(HidManagerScan, PassOverAConnectedBoardOnlyProbesIt) {
    plugNew(1);
    startEmpty();
    manager->scanDevices();
    EXPECT_EQ(bus.callTexts(), (Lines{
                                   "enumerate",
                                   "open port#0001 read-write synchronous: ok",
                                   "attributes port#0001: ok",
                                   "close port#0001",
                               }));
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(HidManagerScan, DisconnectsWithCancelThenBothCloses) {
    const auto board = plugNew(1);
    startEmpty();
    ASSERT_TRUE(waitForReader(board));
    bus.unplug(board);
    manager->scanDevices();
    EXPECT_EQ(bus.callTexts(), (Lines{"enumerate", "cancel port#0001", "close port#0001", "close port#0001"}));
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device disconnected: 0000000000000001"}));
    EXPECT_TRUE(manager->listDevices().empty());
}

TEST_F(HidManagerScan, ForeignDeviceIsProbedAndNothingElse) {
    VirtualBoardModel model;
    model.vendorId = 0x046D;
    const auto otherVendor = std::make_shared<VirtualBoard>(model);
    model = {};
    model.productId = 0x0001;
    const auto otherProduct = std::make_shared<VirtualBoard>(model);
    startEmpty();
    bus.plug(otherVendor);
    bus.plug(otherProduct);
    manager->scanDevices();
    manager->sendSimStatus(true);
    manager->sendBootselCommand();
    EXPECT_EQ(bus.callTexts(), (Lines{
                                   "enumerate",
                                   "open port#0001 read-write synchronous: ok",
                                   "attributes port#0001: ok",
                                   "close port#0001",
                                   "open port#0002 read-write synchronous: ok",
                                   "attributes port#0002: ok",
                                   "close port#0002",
                               }));
    EXPECT_FALSE(manager->hasDevices());
}

TEST_F(HidManagerScan, ProbeFallsBackToReadOnly) {
    const auto board = makeBoard(1);
    bus.setFaults(board, {.refusedOpens = {{HidAccess::ReadWrite, HidMode::Synchronous}}});
    startEmpty();
    bus.plug(board);
    manager->scanDevices();
    const auto calls = bus.callTexts();
    ASSERT_GE(calls.size(), 5U);
    EXPECT_EQ(Lines(calls.begin(), calls.begin() + 5), (Lines{
                                                           "enumerate",
                                                           "open port#0001 read-write synchronous: failed",
                                                           "open port#0001 read-only synchronous: ok",
                                                           "attributes port#0001: ok",
                                                           "close port#0001",
                                                       }));
    EXPECT_TRUE(manager->hasDevices());
}

TEST_F(HidManagerScan, PathThatCanNotBeProbedIsSkippedSilently) {
    const auto board = makeBoard(1);
    bus.setFaults(board, {.refusedOpens = {{HidAccess::ReadWrite, HidMode::Synchronous},
                                           {HidAccess::ReadOnly, HidMode::Synchronous}}});
    startEmpty();
    bus.plug(board);
    plugNew(2);
    manager->scanDevices();
    EXPECT_EQ(devices(), (Devices{{secondName, 0}}));
    EXPECT_EQ(log.linesWith("WARN"), Lines());
}

TEST_F(HidManagerScan, PathWithoutAttributesIsSkippedAndClosed) {
    const auto board = makeBoard(1);
    bus.setFaults(board, {.attributesFail = true});
    startEmpty();
    bus.plug(board);
    manager->scanDevices();
    EXPECT_FALSE(manager->hasDevices());
    EXPECT_EQ(bus.openHandleCount(), 0U);
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(HidManagerScan, SessionThatCanNoLongerBeProbedIsDisconnected) {
    const auto board = plugNew(1);
    startEmpty();
    bus.setFaults(board, {.refusedOpens = {{HidAccess::ReadWrite, HidMode::Synchronous},
                                           {HidAccess::ReadOnly, HidMode::Synchronous}}});
    manager->scanDevices();
    EXPECT_FALSE(manager->hasDevices());
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device disconnected: 0000000000000001"}));
}

TEST_F(HidManagerScan, BoardThatCanNotBeOpenedWarnsAtEachPass) {
    const auto board = makeBoard(1);
    bus.setFaults(board, {.refusedOpens = {{HidAccess::ReadWrite, HidMode::Overlapped},
                                           {HidAccess::ReadOnly, HidMode::Overlapped}}});
    startEmpty();
    bus.plug(board);
    manager->scanDevices();
    manager->scanDevices();
    EXPECT_EQ(log.lines(),
              (Lines{"[WARN] Failed to open HID device: port#0001", "[WARN] Failed to open HID device: port#0001"}));
    EXPECT_FALSE(manager->hasDevices());
    EXPECT_EQ(bus.openHandleCount(), 0U);
    bus.setFaults(board, {});
    manager->scanDevices();
    EXPECT_EQ(devices(), (Devices{{firstName, 0}}));
}

TEST_F(HidManagerScan, ReadHandleFallsBackToReadOnly) {
    const auto board = makeBoard(1);
    bus.setFaults(board, {.refusedOpens = {{HidAccess::ReadWrite, HidMode::Overlapped}}});
    startEmpty();
    bus.plug(board);
    manager->scanDevices();
    board->press(3);
    EXPECT_TRUE(events.waitForCount(1));
    manager->sendSimStatus(true);
    EXPECT_EQ(board->simConnected(), true);
    EXPECT_EQ(log.linesWith("WARN"), Lines());
}

TEST_F(HidManagerScan, BoardWithoutWriteHandleIsInputOnlyForItsSession) {
    const auto board = makeBoard(1);
    bus.setFaults(board, {.refusedOpens = {{HidAccess::ReadWrite, HidMode::Synchronous}}});
    startEmpty();
    bus.plug(board);
    manager->scanDevices();
    EXPECT_EQ(log.lines(), (Lines{"[WARN] Failed to open HID write handle; output disabled for: port#0001",
                                  "[INFO] HID device connected: 0000000000000001 index=0"}));
    board->press(3);
    EXPECT_TRUE(events.waitForCount(1));
    bus.setFaults(board, {});
    manager->scanDevices();
    EXPECT_FALSE(manager->sendLedControl(firstName, 0, {1, 255, 0, 0, 0}));
    EXPECT_TRUE(board->outputs().empty());
    EXPECT_EQ(log.lines().size(), 2U);
}

TEST_F(HidManagerScan, IndexesFollowEnumerationAndTheListFollowsPaths) {
    plugNew(1, "z");
    plugNew(2, "a");
    start();
    EXPECT_EQ(devices(), (Devices{{secondName, 1}, {firstName, 0}}));
}

TEST_F(HidManagerScan, ReplugGivesTheNextIndex) {
    const auto first = plugNew(1);
    plugNew(2);
    start();
    EXPECT_EQ(devices(), (Devices{{firstName, 0}, {secondName, 1}}));
    bus.unplug(first);
    manager->scanDevices();
    bus.plug(first);
    manager->scanDevices();
    EXPECT_EQ(devices(), (Devices{{secondName, 1}, {firstName, 2}}));
}

TEST_F(HidManagerScan, ReplugBetweenTwoPassesIsANewConnection) {
    const auto board = plugNew(1);
    startEmpty();
    bus.plug(board);
    manager->scanDevices();
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device disconnected: 0000000000000001",
                                  "[INFO] HID device connected: 0000000000000001 index=1"}));
    board->press(5);
    ASSERT_TRUE(events.waitForCount(1));
    EXPECT_EQ(events.events()[0].index, 1);
}

TEST_F(HidManagerScan, FailedConnectionUsesNoIndex) {
    const auto board = makeBoard(1);
    bus.setFaults(board, {.refusedOpens = {{HidAccess::ReadWrite, HidMode::Overlapped},
                                           {HidAccess::ReadOnly, HidMode::Overlapped}}});
    bus.plug(board);
    plugNew(2);
    start();
    EXPECT_EQ(devices(), (Devices{{secondName, 0}}));
}

TEST_F(HidManagerScan, EmptyMatchedListDisconnectsEverySession) {
    const auto first = plugNew(1);
    const auto second = plugNew(2);
    startEmpty();
    bus.unplug(first);
    bus.unplug(second);
    manager->scanDevices();
    EXPECT_TRUE(manager->listDevices().empty());
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device disconnected: 0000000000000001",
                                  "[INFO] HID device disconnected: 0000000000000002"}));
}

TEST_F(HidManagerScan, DisconnectsTheGoneBeforeItConnectsTheNew) {
    const auto first = plugNew(1);
    startEmpty();
    bus.unplug(first);
    plugNew(2);
    manager->scanDevices();
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device disconnected: 0000000000000001",
                                  "[INFO] HID device connected: 0000000000000002 index=1"}));
}

TEST_F(HidManagerScan, OneRefusedBoardDoesNotHinderTheNext) {
    const auto board = makeBoard(1);
    bus.setFaults(board, {.refusedOpens = {{HidAccess::ReadWrite, HidMode::Overlapped},
                                           {HidAccess::ReadOnly, HidMode::Overlapped}}});
    bus.plug(board);
    plugNew(2);
    start();
    EXPECT_EQ(devices(), (Devices{{secondName, 0}}));
}

TEST_F(HidManagerScan, CarriesManyBoards) {
    std::vector<std::shared_ptr<VirtualBoard>> boards(50);
    for (auto& board : boards) {
        board = plugNew(static_cast<std::uint8_t>(&board - boards.data()));
    }
    start();
    EXPECT_EQ(manager->listDevices().size(), 50U);
    for (const auto& board : boards) {
        board->press(1);
    }
    EXPECT_TRUE(events.waitForCount(50));
    stop();
    EXPECT_EQ(bus.openHandleCount(), 0U);
}
