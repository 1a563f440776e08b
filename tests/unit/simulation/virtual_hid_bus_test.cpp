#include "simulation/boards/virtual_hid_bus.h"

#include "tests/support/wait_until.h"

#include <gtest/gtest.h>

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

    /// The result of a read that waits when `change` happens.
    HidReadResult readDuring(const std::function<void()>& change) {
        HidReadResult result;
        std::thread thread([&] { result = read(60s); });
        EXPECT_TRUE(waitUntil([&] { return bus.pendingReadCount(board) == 1; }));
        change();
        thread.join();
        EXPECT_EQ(bus.pendingReadCount(board), 0U);
        return result;
    }

    static Bytes bytesFrom(const HidReader& reader) {
        const HidReadResult result = reader(0ms);
        EXPECT_EQ(result.status, HidReadStatus::Data);
        return {result.data.begin(), result.data.end()};
    }

    VirtualHidBus bus;
    std::shared_ptr<VirtualBoard> board = std::make_shared<VirtualBoard>();
    std::string path = bus.plug(board);
    HidTransport hid = bus.transport();
    HidHandle readHandle = openReader();
    HidReader read = hid.makeReader(readHandle);
    HidHandle writeHandle = openWriter();
};

} // namespace

TEST_F(VirtualHidBusTest, EachPluggingHasAPathOfItsOwn) {
    bus.plug(std::make_shared<VirtualBoard>(), "a");
    EXPECT_EQ(hid.enumerate(), (Lines{"port#0001", "a#0002"}));
    EXPECT_EQ(bus.plug(board), "port#0003");
    EXPECT_EQ(hid.enumerate(), (Lines{"a#0002", "port#0003"}));
    bus.unplug(board);
    bus.unplug(board);
    bus.replug(board);
    EXPECT_EQ(hid.enumerate(), Lines{"a#0002"});
    EXPECT_EQ(bus.pathOf(board), "");
    EXPECT_EQ(openWriter(), invalidHidHandle);
}

TEST_F(VirtualHidBusTest, PluggingAgainKillsTheOldHandles) {
    bus.plug(board);
    board->press(1);
    EXPECT_EQ(read(60s).status, HidReadStatus::Failure);
    EXPECT_EQ(hid.write(writeHandle, simReport).error, deviceGone);
    EXPECT_EQ(hid.setOutputReport(writeHandle, simReport).error, deviceGone);
    HidAttributes attributes;
    HidProtocol::Report report{0x20};
    EXPECT_FALSE(hid.attributes(writeHandle, attributes));
    EXPECT_FALSE(hid.getFeature(readHandle, report));
    EXPECT_TRUE(board->outputs().empty());
}

TEST_F(VirtualHidBusTest, ReplugKeepsThePathAndKillsTheOldHandles) {
    bus.replug(board);
    EXPECT_EQ(hid.enumerate(), Lines{"port#0001"});
    const HidReader newReader = hid.makeReader(openReader());
    board->sendRaw(Bytes{1, 2, 3});
    EXPECT_EQ(read(60s).status, HidReadStatus::Failure);
    EXPECT_FALSE(hid.write(writeHandle, simReport).ok);
    EXPECT_EQ(bytesFrom(newReader), (Bytes{1, 2, 3}));
    EXPECT_TRUE(hid.write(openWriter(), simReport).ok);
}

TEST_F(VirtualHidBusTest, UnplugFailsReadsOnceTheQueueIsEmpty) {
    board->sendRaw(Bytes{1});
    bus.unplug(board);
    board->sendRaw(Bytes{2});
    EXPECT_EQ(bytesFrom(read), Bytes{1});
    EXPECT_EQ(read(60s).status, HidReadStatus::Failure);
}

TEST_F(VirtualHidBusTest, CountsHandlesAndNeverReusesOne) {
    const HidHandle first = openWriter();
    EXPECT_EQ(bus.openHandleCount(), 3U);
    hid.close(first);
    EXPECT_EQ(bus.openHandleCount(), 2U);
    EXPECT_NE(openWriter(), first);
}

TEST_F(VirtualHidBusTest, KeepsFaultsWhenTheBoardIsPluggedAgain) {
    bus.setFaults(board, {.attributesFail = true});
    path = bus.plug(board);
    HidAttributes attributes{7, 8};
    EXPECT_FALSE(hid.attributes(openWriter(), attributes));
    EXPECT_EQ(attributes.vendorId, 7);
    path = bus.plug(std::make_shared<VirtualBoard>());
    EXPECT_TRUE(hid.attributes(openWriter(), attributes)) << "the faults are those of one board";
}

TEST_F(VirtualHidBusTest, InputReachesEveryReaderThatIsOpen) {
    const HidReader other = hid.makeReader(openReader());
    board->sendRaw(Bytes{1, 2, 3});
    const HidReader late = hid.makeReader(openReader());
    EXPECT_EQ(bytesFrom(read), (Bytes{1, 2, 3}));
    EXPECT_EQ(bytesFrom(other), (Bytes{1, 2, 3}));
    EXPECT_EQ(read(0ms).status, HidReadStatus::Timeout);
    EXPECT_EQ(late(0ms).status, HidReadStatus::Timeout);
}

TEST_F(VirtualHidBusTest, InputWakesAPendingRead) {
    EXPECT_EQ(readDuring([&] { board->sendRaw(Bytes{5}); }).status, HidReadStatus::Data);
}

TEST_F(VirtualHidBusTest, FullQueueDropsTheNewestReports) {
    for (std::uint8_t number = 0; number < 70; ++number) {
        board->sendRaw(Bytes{number});
    }
    for (std::uint8_t number = 0; number < 64; ++number) {
        EXPECT_EQ(bytesFrom(read), Bytes{number});
    }
    EXPECT_EQ(read(0ms).status, HidReadStatus::Timeout);
}

TEST_F(VirtualHidBusTest, ReadGivesAtMost32BytesAndMayLackTheReportId) {
    board->sendRaw(Bytes(40, 7));
    EXPECT_EQ(read(0ms).data.size(), 32U);
    bus.setFaults(board, {.readsLackReportId = true});
    board->press(0x1234);
    EXPECT_EQ(read(0ms).data.size(), 31U);
    board->sendRaw({});
    EXPECT_EQ(bytesFrom(read), Bytes{});
}

TEST_F(VirtualHidBusTest, CancelEndsAHandlesPendingReadAndAllLaterOnes) {
    const HidReader other = hid.makeReader(openReader());
    EXPECT_EQ(readDuring([&] { hid.cancelReads(readHandle); }).status, HidReadStatus::Failure);
    board->press(1);
    EXPECT_EQ(read(60s).status, HidReadStatus::Failure);
    EXPECT_EQ(other(0ms).status, HidReadStatus::Data);
}

TEST_F(VirtualHidBusTest, FailingWriteReachesNoBoardAndAShortOneArrivesCut) {
    bus.setFaults(board, {.writeError = 31, .setOutputReportError = 87});
    EXPECT_EQ(hid.write(writeHandle, simReport).error, 31U);
    EXPECT_EQ(hid.setOutputReport(writeHandle, simReport).error, 87U);
    EXPECT_TRUE(board->outputs().empty());
    bus.setFaults(board, {.writeCount = 31});
    EXPECT_EQ(hid.write(writeHandle, simReport).count, 31U);
    EXPECT_EQ(board->outputs().at(0).bytes.size(), 31U);
    EXPECT_FALSE(board->simConnected());
}

TEST_F(VirtualHidBusTest, BoardInBootselLeavesTheBusUntilItIsPluggedAgain) {
    EXPECT_TRUE(hid.write(writeHandle, HidProtocol::encodeBootsel()).ok);
    EXPECT_TRUE(hid.enumerate().empty());
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
    // This fails without being misuse.
    EXPECT_EQ(hid.write(hid.open(path, HidAccess::ReadOnly, HidMode::Synchronous), simReport).error, 5U);
    EXPECT_EQ(bus.misuseCount(), 6U);
}

TEST(VirtualHidBusLife, TransportOutlivesItsBus) {
    auto bus = std::make_unique<VirtualHidBus>();
    const std::string path = bus->plug(std::make_shared<VirtualBoard>());
    const HidTransport hid = bus->transport();
    const HidReader reader = hid.makeReader(hid.open(path, HidAccess::ReadWrite, HidMode::Overlapped));
    const HidHandle writer = hid.open(path, HidAccess::ReadWrite, HidMode::Synchronous);
    bus.reset();
    EXPECT_EQ(reader(60s).status, HidReadStatus::Failure);
    EXPECT_EQ(hid.write(writer, simReport).error, deviceGone);
    EXPECT_TRUE(hid.enumerate().empty());
}
