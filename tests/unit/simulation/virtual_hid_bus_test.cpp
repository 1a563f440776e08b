#include "simulation/boards/virtual_hid_bus.h"

#include "tests/support/wait_until.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>

using namespace std::chrono_literals;

namespace {

using Bytes = std::vector<std::uint8_t>;
using Lines = std::vector<std::string>;

const HidProtocol::Report simReport = HidProtocol::encodeSimStatus(true);

class VirtualHidBusTest : public testing::Test {
public:
    HidHandle openReader() { return hid.open(path, HidAccess::ReadWrite, HidMode::Overlapped); }
    HidHandle openWriter() { return hid.open(path, HidAccess::ReadWrite, HidMode::Synchronous); }

    VirtualHidBus bus;
    std::shared_ptr<VirtualBoard> board = std::make_shared<VirtualBoard>();
    std::string path = bus.plug(board);
    HidTransport hid = bus.transport();
};

Bytes bytesOf(const HidReadResult& result) {
    return {result.data.begin(), result.data.end()};
}

} // namespace

TEST_F(VirtualHidBusTest, EnumeratesInTheOrderOfPlugging) {
    const auto other = std::make_shared<VirtualBoard>();
    bus.plug(other, "a");
    EXPECT_EQ(hid.enumerate(), (Lines{"port#0001", "a#0002"}));
    bus.unplug(board);
    EXPECT_EQ(hid.enumerate(), (Lines{"a#0002"}));
    EXPECT_EQ(bus.pathOf(board), "");
    EXPECT_EQ(bus.pathOf(other), "a#0002");
}

TEST_F(VirtualHidBusTest, EachPluggingHasAPathOfItsOwn) {
    EXPECT_EQ(bus.plug(board), "port#0002");
    bus.unplug(board);
    EXPECT_EQ(bus.plug(board), "port#0003");
    EXPECT_EQ(hid.enumerate(), (Lines{"port#0003"}));
}

TEST_F(VirtualHidBusTest, ReplugKeepsThePathAndKillsTheOpenHandles) {
    const auto oldHandle = openReader();
    const auto oldReader = hid.makeReader(oldHandle);
    const auto oldWriter = openWriter();
    bus.replug(board);
    EXPECT_EQ(hid.enumerate(), (Lines{"port#0001"}));
    EXPECT_EQ(bus.pathOf(board), path);
    const auto newReader = hid.makeReader(openReader());
    board->sendRaw(Bytes{1, 2, 3});
    EXPECT_EQ(oldReader(60s).status, HidReadStatus::Failure);
    EXPECT_FALSE(hid.write(oldWriter, simReport).ok);
    EXPECT_EQ(bytesOf(newReader(0ms)), (Bytes{1, 2, 3}));
    EXPECT_TRUE(hid.write(openWriter(), simReport).ok);
}

TEST_F(VirtualHidBusTest, ReplugOfAnAbsentBoardDoesNothing) {
    bus.unplug(board);
    bus.replug(board);
    EXPECT_TRUE(hid.enumerate().empty());
}

TEST_F(VirtualHidBusTest, UnpluggingAnAbsentBoardDoesNothing) {
    bus.unplug(board);
    bus.unplug(board);
    bus.unplug(std::make_shared<VirtualBoard>());
    EXPECT_TRUE(hid.enumerate().empty());
}

TEST_F(VirtualHidBusTest, HandlesAreNeverReusedAndCounted) {
    std::set<HidHandle> seen;
    for (int turn = 0; turn < 100; ++turn) {
        const auto handle = openWriter();
        EXPECT_NE(handle, invalidHidHandle);
        EXPECT_TRUE(seen.insert(handle).second);
        EXPECT_EQ(bus.openHandleCount(), 1U);
        hid.close(handle);
    }
    EXPECT_EQ(bus.openHandleCount(), 0U);
    EXPECT_EQ(bus.misuseCount(), 0U);
}

TEST_F(VirtualHidBusTest, UnknownPathCanNotBeOpened) {
    EXPECT_EQ(hid.open("port#0009", HidAccess::ReadWrite, HidMode::Synchronous), invalidHidHandle);
    bus.unplug(board);
    EXPECT_EQ(openWriter(), invalidHidHandle);
}

TEST_F(VirtualHidBusTest, RefusesOpensByAccessAndMode) {
    bus.setFaults(board, {.refusedOpens = {{HidAccess::ReadWrite, HidMode::Synchronous},
                                           {HidAccess::ReadOnly, HidMode::Overlapped}}});
    EXPECT_EQ(openWriter(), invalidHidHandle);
    EXPECT_EQ(hid.open(path, HidAccess::ReadOnly, HidMode::Overlapped), invalidHidHandle);
    EXPECT_NE(openReader(), invalidHidHandle);
    EXPECT_NE(hid.open(path, HidAccess::ReadOnly, HidMode::Synchronous), invalidHidHandle);
}

TEST_F(VirtualHidBusTest, FaultsAreOfOneBoardAlone) {
    const auto other = std::make_shared<VirtualBoard>();
    const auto otherPath = bus.plug(other);
    bus.setFaults(board, {.refusedOpens = {{HidAccess::ReadWrite, HidMode::Synchronous}}});
    EXPECT_NE(hid.open(otherPath, HidAccess::ReadWrite, HidMode::Synchronous), invalidHidHandle);
}

TEST_F(VirtualHidBusTest, FaultsOutliveAReplug) {
    bus.setFaults(board, {.attributesFail = true});
    path = bus.plug(board);
    HidAttributes attributes{7, 8};
    EXPECT_FALSE(hid.attributes(openWriter(), attributes));
    EXPECT_EQ(attributes.vendorId, 7);
}

TEST_F(VirtualHidBusTest, TellsIdsAndSerial) {
    VirtualBoardModel model;
    model.vendorId = 0x046D;
    model.productId = 0xC52B;
    model.serial = "SN";
    path = bus.plug(std::make_shared<VirtualBoard>(model));
    const auto handle = openReader();
    HidAttributes attributes;
    std::string serial;
    ASSERT_TRUE(hid.attributes(handle, attributes));
    ASSERT_TRUE(hid.serialNumber(handle, serial));
    EXPECT_EQ(attributes.vendorId, 0x046D);
    EXPECT_EQ(attributes.productId, 0xC52B);
    EXPECT_EQ(serial, "SN");
}

TEST_F(VirtualHidBusTest, SerialThatIsMissingOrFailsIsUnchanged) {
    std::string serial = "old";
    EXPECT_FALSE(hid.serialNumber(openReader(), serial));
    VirtualBoardModel model;
    model.serial = "SN";
    const auto other = std::make_shared<VirtualBoard>(model);
    path = bus.plug(other);
    bus.setFaults(other, {.serialFails = true});
    EXPECT_FALSE(hid.serialNumber(openReader(), serial));
    EXPECT_EQ(serial, "old");
}

TEST_F(VirtualHidBusTest, FeaturesAnswerFailOrLie) {
    const auto handle = openReader();
    HidProtocol::Report report{0x20};
    ASSERT_TRUE(hid.getFeature(handle, report));
    EXPECT_EQ(report, board->featureReply(0x20).value());
    bus.setFaults(board, {.featureReplies = {{0x20, HidProtocol::Report{0x21, 9}}}});
    report = {0x20};
    ASSERT_TRUE(hid.getFeature(handle, report));
    EXPECT_EQ(report, (HidProtocol::Report{0x21, 9}));
    bus.setFaults(board, {.failingFeatures = {0x20}});
    EXPECT_FALSE(hid.getFeature(handle, report));
}

TEST_F(VirtualHidBusTest, InputReachesEveryOpenOverlappedHandle) {
    const auto one = hid.makeReader(openReader());
    const auto other = hid.makeReader(openReader());
    board->sendRaw(Bytes{1, 2, 3});
    EXPECT_EQ(bytesOf(one(0ms)), (Bytes{1, 2, 3}));
    EXPECT_EQ(bytesOf(other(0ms)), (Bytes{1, 2, 3}));
    EXPECT_EQ(one(0ms).status, HidReadStatus::Timeout);
}

TEST_F(VirtualHidBusTest, InputIsLostWhileNoReaderIsOpen) {
    board->sendRaw(Bytes{1});
    const auto reader = hid.makeReader(openReader());
    EXPECT_EQ(reader(0ms).status, HidReadStatus::Timeout);
}

TEST_F(VirtualHidBusTest, InputWakesAPendingRead) {
    const auto reader = hid.makeReader(openReader());
    Bytes received;
    std::thread thread([&] { received = bytesOf(reader(60s)); });
    EXPECT_TRUE(waitUntil([&] { return bus.pendingReadCount(board) == 1; }));
    board->sendRaw(Bytes{5});
    thread.join();
    EXPECT_EQ(received, (Bytes{5}));
    EXPECT_EQ(bus.pendingReadCount(board), 0U);
}

TEST_F(VirtualHidBusTest, QueueIsBoundedAndDropsTheNewest) {
    const auto reader = hid.makeReader(openReader());
    for (int number = 0; number < 70; ++number) {
        board->sendRaw(Bytes{static_cast<std::uint8_t>(number)});
    }
    EXPECT_EQ(bus.droppedReports(), 6U);
    for (int number = 0; number < 64; ++number) {
        EXPECT_EQ(bytesOf(reader(0ms)), (Bytes{static_cast<std::uint8_t>(number)}));
    }
    EXPECT_EQ(reader(0ms).status, HidReadStatus::Timeout);
}

TEST_F(VirtualHidBusTest, QueueLimitCanBeSet) {
    bus.setQueueLimit(1000);
    openReader();
    for (int number = 0; number < 1001; ++number) {
        board->press(1);
    }
    EXPECT_EQ(bus.droppedReports(), 1U);
}

TEST_F(VirtualHidBusTest, ReadGivesNoMoreThan32Bytes) {
    const auto reader = hid.makeReader(openReader());
    board->sendRaw(Bytes(40, 7));
    EXPECT_EQ(reader(0ms).data.size(), 32U);
}

TEST_F(VirtualHidBusTest, ReadsMayLackTheReportId) {
    bus.setFaults(board, {.readsLackReportId = true});
    const auto reader = hid.makeReader(openReader());
    board->press(0x1234);
    EXPECT_EQ(reader(0ms).data.size(), 31U);
    board->sendRaw({});
    const auto empty = reader(0ms);
    EXPECT_EQ(empty.status, HidReadStatus::Data);
    EXPECT_TRUE(empty.data.empty());
}

TEST_F(VirtualHidBusTest, FailingReadsEndAPendingOne) {
    const auto reader = hid.makeReader(openReader());
    auto status = HidReadStatus::Data;
    std::thread thread([&] { status = reader(60s).status; });
    EXPECT_TRUE(waitUntil([&] { return bus.pendingReadCount(board) == 1; }));
    bus.setFaults(board, {.readsFail = true});
    thread.join();
    EXPECT_EQ(status, HidReadStatus::Failure);
    EXPECT_EQ(reader(60s).status, HidReadStatus::Failure);
}

TEST_F(VirtualHidBusTest, CancellingEndsAPendingReadAndAllLaterOnes) {
    const auto handle = openReader();
    const auto reader = hid.makeReader(handle);
    const auto other = hid.makeReader(openReader());
    auto status = HidReadStatus::Data;
    std::thread thread([&] { status = reader(60s).status; });
    EXPECT_TRUE(waitUntil([&] { return bus.pendingReadCount(board) == 1; }));
    hid.cancelReads(handle);
    thread.join();
    EXPECT_EQ(status, HidReadStatus::Failure);
    board->press(1);
    EXPECT_EQ(reader(60s).status, HidReadStatus::Failure);
    EXPECT_EQ(other(0ms).status, HidReadStatus::Data);
}

TEST_F(VirtualHidBusTest, UnpluggingEndsReadsBehindTheirQueue) {
    const auto reader = hid.makeReader(openReader());
    board->sendRaw(Bytes{1});
    bus.unplug(board);
    board->sendRaw(Bytes{2});
    EXPECT_EQ(bytesOf(reader(60s)), (Bytes{1}));
    EXPECT_EQ(reader(60s).status, HidReadStatus::Failure);
}

TEST_F(VirtualHidBusTest, OldHandlesStayDeadAfterAReplug) {
    const auto readHandle = openReader();
    const auto writeHandle = openWriter();
    const auto reader = hid.makeReader(readHandle);
    bus.plug(board);
    board->press(1);
    EXPECT_EQ(reader(60s).status, HidReadStatus::Failure);
    const auto result = hid.write(writeHandle, simReport);
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.error, 1167U);
    EXPECT_EQ(hid.setOutputReport(writeHandle, simReport).error, 1167U);
    HidAttributes attributes;
    std::string serial;
    HidProtocol::Report report{0x20};
    EXPECT_FALSE(hid.attributes(writeHandle, attributes));
    EXPECT_FALSE(hid.serialNumber(readHandle, serial));
    EXPECT_FALSE(hid.getFeature(readHandle, report));
    EXPECT_TRUE(board->outputs().empty());
}

TEST_F(VirtualHidBusTest, WriteReachesTheBoard) {
    const auto result = hid.write(openWriter(), simReport);
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.count, 32U);
    EXPECT_EQ(result.error, 0U);
    EXPECT_EQ(board->simConnected(), true);
    EXPECT_EQ(board->outputs(), (std::vector<BoardOutput>{{OutputCall::Write, {simReport.begin(), simReport.end()}}}));
}

TEST_F(VirtualHidBusTest, SetOutputReportReachesTheBoardAndCountsNothing) {
    const auto result = hid.setOutputReport(openWriter(), simReport);
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.count, 0U);
    EXPECT_EQ(board->outputs()[0].call, OutputCall::SetOutputReport);
}

TEST_F(VirtualHidBusTest, FailingWritesGiveTheirCodes) {
    bus.setFaults(board, {.writeError = 31, .setOutputReportError = 87});
    const auto handle = openWriter();
    const auto written = hid.write(handle, simReport);
    EXPECT_FALSE(written.ok);
    EXPECT_EQ(written.error, 31U);
    EXPECT_EQ(written.count, 0U);
    EXPECT_EQ(hid.setOutputReport(handle, simReport).error, 87U);
    EXPECT_TRUE(board->outputs().empty());
}

TEST_F(VirtualHidBusTest, ShortWriteIsCutOnTheWay) {
    bus.setFaults(board, {.writeCount = 31});
    const auto result = hid.write(openWriter(), simReport);
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.count, 31U);
    EXPECT_EQ(board->outputs()[0].bytes.size(), 31U);
    EXPECT_FALSE(board->simConnected().has_value());
}

TEST_F(VirtualHidBusTest, ReadOnlyHandleCanNotWrite) {
    const auto handle = hid.open(path, HidAccess::ReadOnly, HidMode::Synchronous);
    EXPECT_EQ(hid.write(handle, simReport).error, 5U);
    EXPECT_EQ(bus.misuseCount(), 0U);
}

TEST_F(VirtualHidBusTest, PulledBoardEndsASlowWrite) {
    bus.setFaults(board, {.writeDelay = 60s});
    const auto handle = openWriter();
    HidWriteResult result;
    std::thread thread([&] { result = hid.write(handle, simReport); });
    bus.unplug(board);
    thread.join();
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.error, 1167U);
}

TEST_F(VirtualHidBusTest, SlowWriteArrivesInTheEnd) {
    bus.setFaults(board, {.writeDelay = 20ms});
    const auto handle = openWriter();
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(hid.write(handle, simReport).ok);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 20ms);
    EXPECT_EQ(board->simConnected(), true);
}

TEST_F(VirtualHidBusTest, BootselLeavesTheBusAndComesBackByPlugging) {
    EXPECT_TRUE(hid.write(openWriter(), HidProtocol::encodeBootsel()).ok);
    EXPECT_TRUE(hid.enumerate().empty());
    EXPECT_TRUE(board->inBootsel());
    bus.plug(board);
    EXPECT_FALSE(board->inBootsel());
    EXPECT_EQ(hid.enumerate(), (Lines{"port#0002"}));
}

TEST_F(VirtualHidBusTest, MisusesAreCounted) {
    const auto closed = openReader();
    const auto late = hid.makeReader(closed);
    hid.close(closed);
    hid.close(closed);
    EXPECT_EQ(hid.write(closed, simReport).error, 6U);
    EXPECT_EQ(hid.setOutputReport(closed, simReport).error, 6U);
    hid.cancelReads(closed);
    EXPECT_EQ(late(60s).status, HidReadStatus::Failure);
    EXPECT_EQ(bus.misuseCount(), 4U);
    EXPECT_EQ(hid.makeReader(openWriter())(60s).status, HidReadStatus::Failure);
    EXPECT_TRUE(hid.write(openReader(), simReport).ok);
    EXPECT_EQ(bus.misuseCount(), 6U);
}

TEST_F(VirtualHidBusTest, RecordsEveryCallInFull) {
    hid.enumerate();
    const auto reading = openReader();
    const auto writing = hid.open(path, HidAccess::ReadOnly, HidMode::Synchronous);
    HidAttributes attributes;
    std::string serial;
    HidProtocol::Report report{0x20};
    hid.attributes(writing, attributes);
    hid.serialNumber(writing, serial);
    hid.getFeature(writing, report);
    const auto reader = hid.makeReader(reading);
    hid.write(writing, Bytes{0x11, 0xAB});
    hid.setOutputReport(writing, Bytes{0x12});
    board->sendRaw(Bytes{1, 0xFF});
    reader(0ms);
    reader(0ms);
    hid.cancelReads(reading);
    reader(0ms);
    hid.close(reading);
    EXPECT_EQ(bus.callTexts(), (Lines{
                                   "enumerate",
                                   "open port#0001 read-write overlapped: ok",
                                   "open port#0001 read-only synchronous: ok",
                                   "attributes port#0001: ok",
                                   "serial port#0001: failed",
                                   "feature port#0001 20: ok",
                                   "reader port#0001: ok",
                                   "write port#0001 11AB: error 5",
                                   "set-output port#0001 12: ok",
                                   "cancel port#0001",
                                   "close port#0001",
                               }));
    const auto reads = bus.reads();
    ASSERT_EQ(reads.size(), 2U);
    EXPECT_EQ(reads[0].text, "read port#0001: 01FF");
    EXPECT_EQ(reads[1].text, "read port#0001: failed");
    EXPECT_EQ(bus.calls()[1].call, HidCall::Open);
    EXPECT_EQ(bus.calls()[1].path, path);
}

TEST_F(VirtualHidBusTest, RecordCanBeClearedAndSwitchedOff) {
    hid.enumerate();
    bus.clearCalls();
    EXPECT_TRUE(bus.calls().empty());
    bus.setRecording(false);
    hid.enumerate();
    EXPECT_TRUE(bus.calls().empty());
}

TEST(VirtualHidBusLife, TransportOutlivesItsBus) {
    const auto board = std::make_shared<VirtualBoard>();
    HidTransport hid;
    HidReader reader;
    HidHandle writing = invalidHidHandle;
    {
        VirtualHidBus bus;
        const auto path = bus.plug(board);
        hid = bus.transport();
        reader = hid.makeReader(hid.open(path, HidAccess::ReadWrite, HidMode::Overlapped));
        writing = hid.open(path, HidAccess::ReadWrite, HidMode::Synchronous);
    }
    board->press(1);
    EXPECT_EQ(reader(60s).status, HidReadStatus::Failure);
    EXPECT_EQ(hid.write(writing, simReport).error, 1167U);
    EXPECT_TRUE(hid.enumerate().empty());
}

TEST(VirtualHidBusThreads, BoardsComeAndGoUnderReadersAndWriters) {
    VirtualHidBus bus;
    const auto hid = bus.transport();
    const auto board = std::make_shared<VirtualBoard>();
    std::atomic<bool> done{false};
    const auto use = [&] {
        while (!done) {
            for (const auto& path : hid.enumerate()) {
                const auto handle = hid.open(path, HidAccess::ReadWrite, HidMode::Overlapped);
                const auto writing = hid.open(path, HidAccess::ReadWrite, HidMode::Synchronous);
                if (handle != invalidHidHandle) {
                    hid.makeReader(handle)(1ms);
                    hid.cancelReads(handle);
                    hid.close(handle);
                }
                if (writing != invalidHidHandle) {
                    hid.write(writing, simReport);
                    hid.close(writing);
                }
            }
        }
    };
    std::thread one(use);
    std::thread other(use);
    for (int turn = 0; turn < 300; ++turn) {
        bus.plug(board);
        board->press(1);
        board->simConnected();
        if (turn % 2 == 0) {
            bus.unplug(board);
        }
    }
    done = true;
    one.join();
    other.join();
    EXPECT_EQ(bus.openHandleCount(), 0U);
    EXPECT_EQ(bus.misuseCount(), 0U);
}
