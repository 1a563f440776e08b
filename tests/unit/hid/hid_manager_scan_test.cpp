#include "tests/unit/hid/hid_fixture.h"

namespace {

using HidManagerScan = HidFixture;

const Lines probeCalls{"enumerate", "open port#0001 read-write synchronous: ok", "attributes port#0001: ok",
                       "close port#0001"};

} // namespace

TEST_F(HidManagerScan, DoesNothingBeforeStart) {
    plugNew(1);
    manager->scanDevices();
    EXPECT_EQ(bus.callTexts(), Lines());
    EXPECT_EQ(log.lines(), Lines());
    EXPECT_EQ(devices(), Devices());
}

TEST_F(HidManagerScan, OpensABoardAndAsksWhoItIsBeforeItReads) {
    startClean();
    plugNew(1);
    manager->scanDevices();
    Lines calls = bus.callTexts();
    EXPECT_EQ(Lines(calls.begin(), calls.begin() + 4), probeCalls);
    calls.erase(calls.begin(), calls.begin() + 4);
    EXPECT_EQ(calls, (Lines{"open port#0001 read-write overlapped: ok", "open port#0001 read-write synchronous: ok",
                            "serial port#0001: failed", "feature port#0001 20: ok", "feature port#0001 21: failed",
                            "reader port#0001: ok"}));
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device connected: 0000000000000001 index=0"}));
}

TEST_F(HidManagerScan, PassOverAConnectedBoardOnlyProbesIt) {
    plugNew(1);
    startClean();
    manager->scanDevices();
    EXPECT_EQ(bus.callTexts(), probeCalls);
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(HidManagerScan, DisconnectsWithCancelThenBothCloses) {
    bus.plug(board);
    startClean();
    ASSERT_TRUE(waitForReader());
    bus.unplug(board);
    manager->scanDevices();
    EXPECT_EQ(bus.callTexts(), (Lines{"enumerate", "cancel port#0001", "close port#0001", "close port#0001"}));
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device disconnected: 0000000000000001"}));
    EXPECT_FALSE(manager->hasDevices());
}

TEST_F(HidManagerScan, DisconnectsByClosingTheReadHandleFirst) {
    std::vector<HidHandle> opened;
    std::vector<HidHandle> closed;
    auto transport = bus.transport();
    transport.open = [&, open = transport.open](const std::string& path, HidAccess access, HidMode mode) {
        return opened.emplace_back(open(path, access, mode));
    };
    transport.close = [&, close = transport.close](HidHandle handle) {
        closed.push_back(handle);
        close(handle);
    };
    useTransport(transport);
    start();
    bus.plug(board);
    opened.clear();
    manager->scanDevices();
    closed.clear();
    bus.unplug(board);
    manager->scanDevices();
    // The first one was the probe's.
    ASSERT_EQ(opened.size(), 3U);
    EXPECT_EQ(closed, (std::vector{opened[1], opened[2]}));
    end();
}

TEST_F(HidManagerScan, ForeignDeviceIsProbedAndNothingElse) {
    startClean();
    for (const auto& [vendorId, productId] : {std::pair{0x046D, 0xABCD}, std::pair{0x1234, 0x0001}}) {
        VirtualBoardModel model;
        model.vendorId = static_cast<std::uint16_t>(vendorId);
        model.productId = static_cast<std::uint16_t>(productId);
        board = std::make_shared<VirtualBoard>(model);
        bus.plug(board);
        bus.clearCalls();
        manager->scanDevices();
        EXPECT_EQ(bus.callTexts().size(), probeCalls.size());
        EXPECT_FALSE(manager->hasDevices());
        bus.unplug(board);
    }
}

TEST_F(HidManagerScan, ProbeFallsBackToReadOnly) {
    startClean();
    plugFaulty(noWriteHandle);
    manager->scanDevices();
    Lines calls = bus.callTexts();
    calls.resize(5);
    EXPECT_EQ(calls,
              (Lines{"enumerate", "open port#0001 read-write synchronous: failed",
                     "open port#0001 read-only synchronous: ok", "attributes port#0001: ok", "close port#0001"}));
    EXPECT_TRUE(manager->hasDevices());
}

TEST_F(HidManagerScan, PathThatCannotBeProbedIsSkippedSilentlyAndClosed) {
    startClean();
    for (const auto& faults : {noProbe, HidLinkFaults{.attributesFail = true}}) {
        plugFaulty(faults);
        manager->scanDevices();
        EXPECT_EQ(devices(), Devices());
        EXPECT_EQ(bus.openHandleCount(), 0U);
        EXPECT_EQ(log.lines(), Lines());
    }
}

TEST_F(HidManagerScan, SessionThatCanNoLongerBeProbedIsDisconnected) {
    bus.plug(board);
    startClean();
    bus.setFaults(board, noProbe);
    manager->scanDevices();
    EXPECT_FALSE(manager->hasDevices());
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device disconnected: 0000000000000001"}));
}

TEST_F(HidManagerScan, BoardThatCannotBeOpenedWarnsAtEachPassUsesNoIndexAndHindersNoOther) {
    startClean();
    plugFaulty(noReadHandle);
    manager->scanDevices();
    plugNew(2);
    manager->scanDevices();
    const std::string warning = "[WARN] Failed to open HID device: port#0001";
    EXPECT_EQ(log.lines(), (Lines{warning, warning, "[INFO] HID device connected: 0000000000000002 index=0"}));
    EXPECT_EQ(bus.openHandleCount(), 2U);
    bus.setFaults(board, {});
    manager->scanDevices();
    EXPECT_EQ(devices(), (Devices{{firstName, 1}, {secondName, 0}}));
}

TEST_F(HidManagerScan, ReadHandleFallsBackToReadOnly) {
    startClean();
    plugFaulty({.refusedOpens = {{HidAccess::ReadWrite, HidMode::Overlapped}}});
    manager->scanDevices();
    board->press(3);
    EXPECT_TRUE(events.waitForCount(1));
    manager->sendSimStatus(true);
    EXPECT_EQ(board->simConnected(), true);
    EXPECT_EQ(log.linesWith("WARN"), Lines());
}

TEST_F(HidManagerScan, BoardWithoutWriteHandleIsInputOnlyForItsSession) {
    startClean();
    plugFaulty(noWriteHandle);
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

TEST_F(HidManagerScan, NewPathGivesTheNextIndexWhetherOrNotAPassSeesTheBoardGone) {
    bus.plug(board);
    plugNew(2);
    startClean();
    bus.unplug(board);
    manager->scanDevices();
    bus.plug(board);
    manager->scanDevices();
    EXPECT_EQ(devices(), (Devices{{secondName, 1}, {firstName, 2}}));
    log.clear();
    bus.plug(board);
    manager->scanDevices();
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device disconnected: 0000000000000001",
                                  "[INFO] HID device connected: 0000000000000001 index=3"}));
    board->press(5);
    ASSERT_TRUE(events.waitForCount(1));
    EXPECT_EQ(events.events()[0].index, 3);
}

TEST_F(HidManagerScan, DisconnectsAllTheGoneBeforeItConnectsTheNew) {
    const auto first = plugNew(1);
    const auto second = plugNew(2);
    startClean();
    bus.unplug(first);
    bus.unplug(second);
    plugNew(3);
    manager->scanDevices();
    EXPECT_EQ(log.lines(), (Lines{"[INFO] HID device disconnected: 0000000000000001",
                                  "[INFO] HID device disconnected: 0000000000000002",
                                  "[INFO] HID device connected: 0000000000000003 index=2"}));
}
