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

constexpr std::uint32_t deviceGone = 1167;
const HidProtocol::Report simReport = HidProtocol::encodeSimStatus(true);

/// A board and an open handle for each direction.
class VirtualHidBusTest : public testing::Test {
public:
    HidHandle openReader() { return hid.open(path, HidAccess::ReadWrite, HidMode::Overlapped); }
    HidHandle openWriter() { return hid.open(path, HidAccess::ReadWrite, HidMode::Synchronous); }

    /// What a read gives that waits while the board, or whatever `change` does, ends it.
    HidReadResult readDuring(const std::function<void()>& change) {
        HidReadResult result;
        std::thread thread([&] { result = read(60s); });
        EXPECT_TRUE(waitUntil([&] { return bus.pendingReadCount(board) == 1; }));
        change();
        thread.join();
        EXPECT_EQ(bus.pendingReadCount(board), 0U);
        return result;
    }

    void expectReadBytes(const HidReader& from, const Bytes& expected) {
        const HidReadResult result = from(0ms);
        EXPECT_EQ(result.status, HidReadStatus::Data);
        EXPECT_EQ(Bytes(result.data.begin(), result.data.end()), expected);
    }
    void expectNothingToRead() { EXPECT_EQ(read(0ms).status, HidReadStatus::Timeout); }

    VirtualHidBus bus;
    std::shared_ptr<VirtualBoard> board = std::make_shared<VirtualBoard>();
    std::string path = bus.plug(board);
    HidTransport hid = bus.transport();
    HidHandle readHandle = openReader();
    HidReader read = hid.makeReader(readHandle);
    HidHandle writeHandle = openWriter();
};

} // namespace

TEST_F(VirtualHidBusTest, EnumeratesBoardsInTheOrderTheyWerePluggedIn) {
    const auto other = std::make_shared<VirtualBoard>();
    bus.plug(other, "a");
    EXPECT_EQ(hid.enumerate(), (Lines{"port#0001", "a#0002"}));
    EXPECT_EQ(bus.plug(board), "port#0003") << "each plugging has its own path";
    EXPECT_EQ(hid.enumerate(), (Lines{"a#0002", "port#0003"}));
    bus.unplug(board);
    EXPECT_EQ(hid.enumerate(), Lines{"a#0002"});
    EXPECT_EQ(bus.pathOf(board), "");
    EXPECT_EQ(bus.pathOf(other), "a#0002");
}

TEST_F(VirtualHidBusTest, IgnoresAnAbsentBoard) {
    bus.unplug(board);
    bus.unplug(board);
    bus.unplug(std::make_shared<VirtualBoard>());
    bus.replug(board);
    EXPECT_TRUE(hid.enumerate().empty());
}

TEST_F(VirtualHidBusTest, PluggingAgainKillsTheOldHandles) {
    bus.plug(board);
    board->press(1);
    EXPECT_EQ(read(60s).status, HidReadStatus::Failure);
    EXPECT_FALSE(hid.write(writeHandle, simReport).ok);
    EXPECT_EQ(hid.write(writeHandle, simReport).error, deviceGone);
    EXPECT_EQ(hid.setOutputReport(writeHandle, simReport).error, deviceGone);
    HidAttributes attributes;
    std::string serial;
    HidProtocol::Report report{0x20};
    EXPECT_FALSE(hid.attributes(writeHandle, attributes));
    EXPECT_FALSE(hid.serialNumber(readHandle, serial));
    EXPECT_FALSE(hid.getFeature(readHandle, report));
    EXPECT_TRUE(board->outputs().empty());
}

TEST_F(VirtualHidBusTest, ReplugKeepsThePathAndKillsTheOldHandles) {
    bus.replug(board);
    EXPECT_EQ(hid.enumerate(), Lines{"port#0001"});
    EXPECT_EQ(bus.pathOf(board), path);
    const auto newReader = hid.makeReader(openReader());
    board->sendRaw(Bytes{1, 2, 3});
    EXPECT_EQ(read(60s).status, HidReadStatus::Failure);
    EXPECT_FALSE(hid.write(writeHandle, simReport).ok);
    expectReadBytes(newReader, {1, 2, 3});
    EXPECT_TRUE(hid.write(openWriter(), simReport).ok);
}

TEST_F(VirtualHidBusTest, UnplugFailsReadsOnceTheQueueIsEmpty) {
    board->sendRaw(Bytes{1});
    bus.unplug(board);
    board->sendRaw(Bytes{2});
    expectReadBytes(read, {1});
    EXPECT_EQ(read(60s).status, HidReadStatus::Failure);
}

TEST_F(VirtualHidBusTest, CountsHandlesAndNeverReusesOne) {
    std::set<HidHandle> seen{readHandle, writeHandle};
    for (int turn = 0; turn < 100; ++turn) {
        const auto handle = openWriter();
        EXPECT_NE(handle, invalidHidHandle);
        EXPECT_TRUE(seen.insert(handle).second);
        EXPECT_EQ(bus.openHandleCount(), 3U);
        hid.close(handle);
    }
    EXPECT_EQ(bus.openHandleCount(), 2U);
    EXPECT_EQ(bus.misuseCount(), 0U);
}

TEST_F(VirtualHidBusTest, OpensNoUnknownPath) {
    EXPECT_EQ(hid.open("port#0009", HidAccess::ReadWrite, HidMode::Synchronous), invalidHidHandle);
    bus.unplug(board);
    EXPECT_EQ(openWriter(), invalidHidHandle);
}

TEST_F(VirtualHidBusTest, RefusesOpensOfOneBoardByAccessAndMode) {
    bus.setFaults(board, {.refusedOpens = {{HidAccess::ReadWrite, HidMode::Synchronous},
                                           {HidAccess::ReadOnly, HidMode::Overlapped}}});
    EXPECT_EQ(openWriter(), invalidHidHandle);
    EXPECT_EQ(hid.open(path, HidAccess::ReadOnly, HidMode::Overlapped), invalidHidHandle);
    EXPECT_NE(openReader(), invalidHidHandle);
    EXPECT_NE(hid.open(path, HidAccess::ReadOnly, HidMode::Synchronous), invalidHidHandle);
    const auto otherPath = bus.plug(std::make_shared<VirtualBoard>());
    EXPECT_NE(hid.open(otherPath, HidAccess::ReadWrite, HidMode::Synchronous), invalidHidHandle);
}

TEST_F(VirtualHidBusTest, KeepsFaultsWhenTheBoardIsPluggedAgain) {
    bus.setFaults(board, {.attributesFail = true});
    path = bus.plug(board);
    HidAttributes attributes{7, 8};
    EXPECT_FALSE(hid.attributes(openWriter(), attributes));
    EXPECT_EQ(attributes.vendorId, 7);
}

TEST_F(VirtualHidBusTest, GivesIdsAndSerialOrLeavesThemUnchanged) {
    std::string serial = "old";
    EXPECT_FALSE(hid.serialNumber(readHandle, serial)) << "this board has none";
    VirtualBoardModel model;
    model.vendorId = 0x046D;
    model.productId = 0xC52B;
    model.serial = "SN";
    const auto other = std::make_shared<VirtualBoard>(model);
    path = bus.plug(other);
    const auto handle = openReader();
    bus.setFaults(other, {.serialFails = true});
    EXPECT_FALSE(hid.serialNumber(handle, serial));
    EXPECT_EQ(serial, "old");
    bus.setFaults(other, {});
    HidAttributes attributes;
    ASSERT_TRUE(hid.attributes(handle, attributes));
    ASSERT_TRUE(hid.serialNumber(handle, serial));
    EXPECT_EQ(attributes.vendorId, 0x046D);
    EXPECT_EQ(attributes.productId, 0xC52B);
    EXPECT_EQ(serial, "SN");
}

TEST_F(VirtualHidBusTest, FeaturesCanAnswerFailOrLie) {
    HidProtocol::Report report{0x20};
    ASSERT_TRUE(hid.getFeature(readHandle, report));
    EXPECT_EQ(report, board->featureReply(0x20).value());
    bus.setFaults(board, {.featureReplies = {{0x20, HidProtocol::Report{0x21, 9}}}});
    report = {0x20};
    ASSERT_TRUE(hid.getFeature(readHandle, report));
    EXPECT_EQ(report, (HidProtocol::Report{0x21, 9}));
    bus.setFaults(board, {.failingFeatures = {0x20}});
    EXPECT_FALSE(hid.getFeature(readHandle, report));
}

TEST_F(VirtualHidBusTest, InputReachesEveryReaderThatIsOpen) {
    const auto other = hid.makeReader(openReader());
    board->sendRaw(Bytes{1, 2, 3});
    const auto late = hid.makeReader(openReader());
    expectReadBytes(read, {1, 2, 3});
    expectReadBytes(other, {1, 2, 3});
    expectNothingToRead();
    EXPECT_EQ(late(0ms).status, HidReadStatus::Timeout);
}

TEST_F(VirtualHidBusTest, InputWakesAPendingRead) {
    const HidReadResult result = readDuring([&] { board->sendRaw(Bytes{5}); });
    EXPECT_EQ(Bytes(result.data.begin(), result.data.end()), Bytes{5});
}

TEST_F(VirtualHidBusTest, FullQueueDropsTheNewestReports) {
    for (std::uint8_t number = 0; number < 70; ++number) {
        board->sendRaw(Bytes{number});
    }
    EXPECT_EQ(bus.droppedReports(), 6U);
    for (std::uint8_t number = 0; number < 64; ++number) {
        expectReadBytes(read, {number});
    }
    expectNothingToRead();
    bus.setQueueLimit(1000);
    for (int number = 0; number < 1001; ++number) {
        board->press(1);
    }
    EXPECT_EQ(bus.droppedReports(), 7U);
}

TEST_F(VirtualHidBusTest, ReadGivesAtMost32BytesAndMayLackTheReportId) {
    board->sendRaw(Bytes(40, 7));
    EXPECT_EQ(read(0ms).data.size(), 32U);
    bus.setFaults(board, {.readsLackReportId = true});
    board->press(0x1234);
    EXPECT_EQ(read(0ms).data.size(), 31U);
    board->sendRaw({});
    expectReadBytes(read, {});
}

TEST_F(VirtualHidBusTest, FailingReadsEndAPendingOne) {
    EXPECT_EQ(readDuring([&] { bus.setFaults(board, {.readsFail = true}); }).status, HidReadStatus::Failure);
    EXPECT_EQ(read(60s).status, HidReadStatus::Failure);
}

TEST_F(VirtualHidBusTest, CancelEndsAHandlesPendingReadAndAllLaterOnes) {
    const auto other = hid.makeReader(openReader());
    EXPECT_EQ(readDuring([&] { hid.cancelReads(readHandle); }).status, HidReadStatus::Failure);
    board->press(1);
    EXPECT_EQ(read(60s).status, HidReadStatus::Failure);
    EXPECT_EQ(other(0ms).status, HidReadStatus::Data);
}

TEST_F(VirtualHidBusTest, OutputReachesTheBoardAndSetOutputReportCountsNothing) {
    const auto written = hid.write(writeHandle, simReport);
    EXPECT_TRUE(written.ok);
    EXPECT_EQ(written.count, 32U);
    EXPECT_EQ(written.error, 0U);
    EXPECT_EQ(board->simConnected(), true);
    const auto set = hid.setOutputReport(writeHandle, simReport);
    EXPECT_TRUE(set.ok);
    EXPECT_EQ(set.count, 0U);
    const Bytes bytes(simReport.begin(), simReport.end());
    EXPECT_EQ(board->outputs(),
              (std::vector<BoardOutput>{{OutputCall::Write, bytes}, {OutputCall::SetOutputReport, bytes}}));
}

TEST_F(VirtualHidBusTest, FailingWritesGiveTheirCodes) {
    bus.setFaults(board, {.writeError = 31, .setOutputReportError = 87});
    const auto written = hid.write(writeHandle, simReport);
    EXPECT_FALSE(written.ok);
    EXPECT_EQ(written.error, 31U);
    EXPECT_EQ(written.count, 0U);
    EXPECT_EQ(hid.setOutputReport(writeHandle, simReport).error, 87U);
    EXPECT_TRUE(board->outputs().empty());
}

TEST_F(VirtualHidBusTest, ShortWriteReachesTheBoardCut) {
    bus.setFaults(board, {.writeCount = 31});
    const auto result = hid.write(writeHandle, simReport);
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.count, 31U);
    EXPECT_EQ(board->outputs()[0].bytes.size(), 31U);
    EXPECT_FALSE(board->simConnected().has_value());
}

TEST_F(VirtualHidBusTest, UnplugEndsASlowWrite) {
    bus.setFaults(board, {.writeDelay = 60s});
    HidWriteResult result;
    std::thread thread([&] { result = hid.write(writeHandle, simReport); });
    bus.unplug(board);
    thread.join();
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.error, deviceGone);
}

TEST_F(VirtualHidBusTest, SlowWriteArrivesAfterItsDelay) {
    bus.setFaults(board, {.writeDelay = 20ms});
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(hid.write(writeHandle, simReport).ok);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 20ms);
    EXPECT_EQ(board->simConnected(), true);
}

TEST_F(VirtualHidBusTest, BootselLeavesTheBusUntilTheBoardIsPluggedAgain) {
    EXPECT_TRUE(hid.write(writeHandle, HidProtocol::encodeBootsel()).ok);
    EXPECT_TRUE(hid.enumerate().empty());
    EXPECT_TRUE(board->inBootsel());
    bus.plug(board);
    EXPECT_FALSE(board->inBootsel());
    EXPECT_EQ(hid.enumerate(), Lines{"port#0002"});
}

TEST_F(VirtualHidBusTest, CountsMisuse) {
    hid.close(readHandle);
    hid.close(readHandle);
    EXPECT_EQ(hid.write(readHandle, simReport).error, 6U);
    EXPECT_EQ(hid.setOutputReport(readHandle, simReport).error, 6U);
    hid.cancelReads(readHandle);
    EXPECT_EQ(read(60s).status, HidReadStatus::Failure);
    EXPECT_EQ(bus.misuseCount(), 4U);
    EXPECT_EQ(hid.makeReader(writeHandle)(60s).status, HidReadStatus::Failure);
    EXPECT_TRUE(hid.write(openReader(), simReport).ok);
    EXPECT_EQ(bus.misuseCount(), 6U);
}

TEST_F(VirtualHidBusTest, RecordsEveryCallInFull) {
    bus.clearCalls();
    EXPECT_TRUE(bus.calls().empty());
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
    EXPECT_EQ(bus.misuseCount(), 0U) << "writing to a read-only handle fails but is no misuse";
    const Lines expected{"enumerate",
                         "open port#0001 read-write overlapped: ok",
                         "open port#0001 read-only synchronous: ok",
                         "attributes port#0001: ok",
                         "serial port#0001: failed",
                         "feature port#0001 20: ok",
                         "reader port#0001: ok",
                         "write port#0001 11AB: error 5",
                         "set-output port#0001 12: ok",
                         "cancel port#0001",
                         "close port#0001"};
    EXPECT_EQ(bus.callTexts(), expected);
    const auto reads = bus.reads();
    ASSERT_EQ(reads.size(), 2U);
    EXPECT_EQ(reads[0].text, "read port#0001: 01FF");
    EXPECT_EQ(reads[1].text, "read port#0001: failed");
    EXPECT_EQ(bus.calls()[1].call, HidCall::Open);
    EXPECT_EQ(bus.calls()[1].path, path);
    bus.clearCalls();
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
    EXPECT_EQ(hid.write(writing, simReport).error, deviceGone);
    EXPECT_TRUE(hid.enumerate().empty());
}

TEST(VirtualHidBusThreads, BoardsComeAndGoWhileThreadsReadAndWrite) {
    VirtualHidBus bus;
    const auto hid = bus.transport();
    const auto board = std::make_shared<VirtualBoard>();
    std::atomic<bool> done{false};
    const auto use = [&] {
        while (!done) {
            for (const auto& path : hid.enumerate()) {
                const auto reading = hid.open(path, HidAccess::ReadWrite, HidMode::Overlapped);
                const auto writing = hid.open(path, HidAccess::ReadWrite, HidMode::Synchronous);
                if (reading != invalidHidHandle) {
                    hid.makeReader(reading)(1ms);
                    hid.cancelReads(reading);
                    hid.close(reading);
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
