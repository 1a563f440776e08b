// The transport on the kernel's own HID stack.

#include "platform/platform.h"
#include "tests/support/wait_until.h"
#include "tests/system/support/uhid_board.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <thread>
#include <vector>

using namespace std::chrono_literals;

namespace {

constexpr std::chrono::milliseconds longRead = 60s;

bool listed(const HidTransport& transport, const std::string& path) {
    const std::vector<std::string> paths = transport.enumerate();
    return std::find(paths.begin(), paths.end(), path) != paths.end();
}

/// Runs something as a user without any rights. The kernel keeps the user per thread; only the C library keeps a
/// process's threads alike.
void runUnprivileged(const std::function<void()>& body) {
    constexpr int nobody = 65534;
    std::thread([&] {
        ASSERT_EQ(syscall(SYS_setgroups, 0, nullptr), 0);
        ASSERT_EQ(syscall(SYS_setresgid, -1, nobody, -1), 0);
        ASSERT_EQ(syscall(SYS_setresuid, -1, nobody, -1), 0);
        body();
    }).join();
}

class HidrawTransport : public testing::Test {
protected:
    HidHandle open(const UhidBoard& board, HidMode mode, HidAccess access = HidAccess::ReadWrite) {
        const HidHandle handle = transport.open(board.path(), access, mode);
        EXPECT_NE(handle, invalidHidHandle);
        return handle;
    }

    const HidTransport transport = systemPlatform().hid;
};

VirtualBoardModel fullModel() {
    VirtualBoardModel model;
    model.boardId = HidProtocol::BoardId{0xE6, 0x61, 0x38, 0xA1, 0xB2, 0xC3, 0xD4, 0xE5};
    model.serial = "PANEL-7";
    model.infoWord0 = 0x1234;
    model.protocolInfo = HidProtocol::ProtocolInfo{1, 2, 0xA5};
    return model;
}

} // namespace

TEST_F(HidrawTransport, ListsABoardByItsSysfsFolderWhileItIsPluggedIn) {
    UhidBoard board;
    const std::string path = board.path();
    EXPECT_TRUE(listed(transport, path));
    EXPECT_NE(path.find("/sys/devices/"), std::string::npos) << path;
    board.unplug();
    EXPECT_FALSE(listed(transport, path));
}

TEST_F(HidrawTransport, GivesAReplugANewPathThoughTheNodeIsTheSame) {
    UhidBoard board;
    const std::string path = board.path();
    const std::string node = board.device().node();
    board.unplug();
    board.plug();
    EXPECT_EQ(board.device().node(), node);
    EXPECT_NE(board.path(), path);
    EXPECT_TRUE(listed(transport, board.path()));
    EXPECT_EQ(transport.open(path, HidAccess::ReadWrite, HidMode::Synchronous), invalidHidHandle);
}

TEST_F(HidrawTransport, TellsVendorAndProduct) {
    VirtualBoardModel model;
    model.vendorId = 0xFEDC;
    model.productId = 0x0123;
    const UhidBoard board(model);
    const HidHandle handle = open(board, HidMode::Synchronous);
    HidAttributes attributes;
    ASSERT_TRUE(transport.attributes(handle, attributes));
    EXPECT_EQ(attributes.vendorId, 0xFEDC);
    EXPECT_EQ(attributes.productId, 0x0123);
    transport.close(handle);
}

TEST_F(HidrawTransport, TellsTheSerialNumber) {
    const UhidBoard board(fullModel());
    const HidHandle handle = open(board, HidMode::Overlapped);
    std::string serial;
    ASSERT_TRUE(transport.serialNumber(handle, serial));
    EXPECT_EQ(serial, "PANEL-7");
    transport.close(handle);
}

TEST_F(HidrawTransport, TellsThatThereIsNoSerialNumber) {
    const UhidBoard board;
    const HidHandle handle = open(board, HidMode::Overlapped);
    std::string serial = "as before";
    EXPECT_FALSE(transport.serialNumber(handle, serial));
    EXPECT_EQ(serial, "as before");
    transport.close(handle);
}

TEST_F(HidrawTransport, ReadsFeatureReports) {
    const UhidBoard board(fullModel());
    const HidHandle handle = open(board, HidMode::Overlapped);
    HidProtocol::Report report{HidProtocol::deviceInfoReportId};
    ASSERT_TRUE(transport.getFeature(handle, report));
    EXPECT_EQ(report, board.panel.featureReply(HidProtocol::deviceInfoReportId));
    report = {HidProtocol::protocolInfoReportId};
    ASSERT_TRUE(transport.getFeature(handle, report));
    EXPECT_EQ(report, board.panel.featureReply(HidProtocol::protocolInfoReportId));
    transport.close(handle);
}

TEST_F(HidrawTransport, SaysThatAFeatureReportIsRefused) {
    VirtualBoardModel model;
    model.boardId.reset();
    const UhidBoard board(model);
    const HidHandle handle = open(board, HidMode::Overlapped);
    HidProtocol::Report report{HidProtocol::deviceInfoReportId};
    EXPECT_FALSE(transport.getFeature(handle, report));
    transport.close(handle);
}

TEST_F(HidrawTransport, ReadsWholeReportsInTheirOrder) {
    UhidBoard board;
    const HidHandle handle = open(board, HidMode::Overlapped);
    const HidReader read = transport.makeReader(handle);
    board.panel.press(0x1234, 1);
    board.panel.turn(21, -3, 4);
    const HidReadResult first = read(longRead);
    ASSERT_EQ(first.status, HidReadStatus::Data);
    ASSERT_EQ(first.data.size(), 32U);
    EXPECT_EQ(first.data[0], HidProtocol::inputEventReportId);
    EXPECT_EQ(first.data[4], 0x34);
    EXPECT_EQ(first.data[5], 0x12);
    EXPECT_EQ(first.data[8], 1);
    const HidReadResult second = read(longRead);
    ASSERT_EQ(second.status, HidReadStatus::Data);
    EXPECT_EQ(second.data[6], 0xFD);
    EXPECT_EQ(second.data[7], 4);
    transport.close(handle);
}

TEST_F(HidrawTransport, EndsAReadWithoutAReportAtItsLimitAndReadsTheNextOne) {
    UhidBoard board;
    const HidHandle handle = open(board, HidMode::Overlapped);
    const HidReader read = transport.makeReader(handle);
    EXPECT_EQ(read(20ms).status, HidReadStatus::Timeout);
    board.panel.press(5);
    EXPECT_EQ(read(longRead).status, HidReadStatus::Data);
    transport.close(handle);
}

TEST_F(HidrawTransport, GivesEachHandleEveryReport) {
    UhidBoard board;
    const HidHandle one = open(board, HidMode::Overlapped);
    const HidHandle other = open(board, HidMode::Overlapped);
    const HidReader readOne = transport.makeReader(one);
    const HidReader readOther = transport.makeReader(other);
    board.panel.press(5);
    EXPECT_EQ(readOne(longRead).status, HidReadStatus::Data);
    EXPECT_EQ(readOther(longRead).status, HidReadStatus::Data);
    transport.close(one);
    transport.close(other);
}

TEST_F(HidrawTransport, CancelsAReadFromAnotherThread) {
    UhidBoard board;
    const HidHandle handle = open(board, HidMode::Overlapped);
    const HidReader read = transport.makeReader(handle);
    std::thread canceller([&] {
        std::this_thread::sleep_for(50ms);
        transport.cancelReads(handle);
    });
    EXPECT_EQ(read(longRead).status, HidReadStatus::Failure);
    canceller.join();
    transport.close(handle);
}

TEST_F(HidrawTransport, FailsReadsThatComeAfterTheCancelling) {
    UhidBoard board;
    const HidHandle handle = open(board, HidMode::Overlapped);
    const HidReader read = transport.makeReader(handle);
    transport.cancelReads(handle);
    EXPECT_EQ(read(longRead).status, HidReadStatus::Failure);
    EXPECT_EQ(read(longRead).status, HidReadStatus::Failure);
    transport.close(handle);
}

TEST_F(HidrawTransport, LeavesOtherHandlesReadingWhenOneIsCancelled) {
    UhidBoard board;
    const HidHandle one = open(board, HidMode::Overlapped);
    const HidHandle other = open(board, HidMode::Overlapped);
    const HidReader read = transport.makeReader(other);
    transport.cancelReads(one);
    board.panel.press(5);
    EXPECT_EQ(read(longRead).status, HidReadStatus::Data);
    transport.close(one);
    transport.close(other);
}

TEST_F(HidrawTransport, EndsTheReadOfABoardThatIsPulledMeanwhile) {
    UhidBoard board;
    const HidHandle handle = open(board, HidMode::Overlapped);
    const HidReader read = transport.makeReader(handle);
    std::thread puller([&] {
        std::this_thread::sleep_for(50ms);
        board.unplug();
    });
    EXPECT_EQ(read(longRead).status, HidReadStatus::Failure);
    puller.join();
    EXPECT_EQ(read(longRead).status, HidReadStatus::Failure);
    transport.close(handle);
}

TEST_F(HidrawTransport, WritesWholeReports) {
    UhidBoard board;
    const HidHandle handle = open(board, HidMode::Synchronous);
    const HidProtocol::Report report = HidProtocol::encodeSimStatus(true);
    const HidWriteResult result = transport.write(handle, report);
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.count, 32U);
    EXPECT_EQ(result.error, 0U);
    ASSERT_TRUE(waitUntil([&] { return !board.panel.outputs().empty(); }));
    EXPECT_EQ(board.panel.outputs()[0].bytes, std::vector<std::uint8_t>(report.begin(), report.end()));
    transport.close(handle);
}

TEST_F(HidrawTransport, SetsOutputReports) {
    UhidBoard board;
    const HidHandle handle = open(board, HidMode::Synchronous);
    const HidWriteResult result = transport.setOutputReport(handle, HidProtocol::encodeBootsel());
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.count, 0U);
    EXPECT_TRUE(waitUntil([&] { return board.panel.inBootsel(); }));
    transport.close(handle);
}

TEST_F(HidrawTransport, TellsTheErrorOfAWriteToABoardThatHasGone) {
    UhidBoard board;
    const HidHandle handle = open(board, HidMode::Synchronous);
    board.unplug();
    const HidWriteResult written = transport.write(handle, HidProtocol::encodeSimStatus(true));
    EXPECT_FALSE(written.ok);
    EXPECT_EQ(written.count, 0U);
    EXPECT_NE(written.error, 0U);
    const HidWriteResult set = transport.setOutputReport(handle, HidProtocol::encodeBootsel());
    EXPECT_FALSE(set.ok);
    EXPECT_NE(set.error, 0U);
    transport.close(handle);
}

TEST_F(HidrawTransport, TellsTheErrorOfAWriteOnAReadOnlyHandle) {
    UhidBoard board;
    const HidHandle handle = open(board, HidMode::Synchronous, HidAccess::ReadOnly);
    const HidWriteResult result = transport.write(handle, HidProtocol::encodeSimStatus(true));
    EXPECT_FALSE(result.ok);
    EXPECT_NE(result.error, 0U);
    EXPECT_TRUE(board.panel.outputs().empty());
    transport.close(handle);
}

TEST_F(HidrawTransport, RefusesABoardWhoseNodeIsMissing) {
    UhidBoard board;
    std::filesystem::remove(board.device().node());
    EXPECT_TRUE(listed(transport, board.path()));
    EXPECT_EQ(transport.open(board.path(), HidAccess::ReadWrite, HidMode::Synchronous), invalidHidHandle);
    EXPECT_EQ(transport.open(board.path(), HidAccess::ReadOnly, HidMode::Overlapped), invalidHidHandle);
}

TEST_F(HidrawTransport, RefusesABoardThatItsUserMayNotOpen) {
    UhidBoard board;
    std::filesystem::permissions(board.device().node(), std::filesystem::perms::owner_all);
    runUnprivileged([&] {
        EXPECT_TRUE(listed(transport, board.path()));
        EXPECT_EQ(transport.open(board.path(), HidAccess::ReadWrite, HidMode::Synchronous), invalidHidHandle);
        EXPECT_EQ(transport.open(board.path(), HidAccess::ReadOnly, HidMode::Synchronous), invalidHidHandle);
    });
}

TEST_F(HidrawTransport, OpensABoardForReadingThatItsUserMayOnlyRead) {
    UhidBoard board;
    std::filesystem::permissions(board.device().node(),
                                 std::filesystem::perms::owner_all | std::filesystem::perms::others_read);
    runUnprivileged([&] {
        EXPECT_EQ(transport.open(board.path(), HidAccess::ReadWrite, HidMode::Overlapped), invalidHidHandle);
        const HidHandle handle = transport.open(board.path(), HidAccess::ReadOnly, HidMode::Overlapped);
        ASSERT_NE(handle, invalidHidHandle);
        const HidReader read = transport.makeReader(handle);
        board.panel.press(5);
        EXPECT_EQ(read(longRead).status, HidReadStatus::Data);
        transport.close(handle);
    });
}

namespace {

/// The system's notification source on a thread of its own, as App runs it.
class NotificationListener {
public:
    NotificationListener() {
        std::string error;
        listening = source.setUp(error);
        EXPECT_TRUE(listening) << error;
        thread = std::thread([this] {
            if (!listening) {
                return;
            }
            source.run([this] { ++changes; });
            source.tearDown();
        });
    }
    ~NotificationListener() {
        if (listening) {
            source.requestEnd();
        }
        thread.join();
    }
    NotificationListener(const NotificationListener&) = delete;
    NotificationListener& operator=(const NotificationListener&) = delete;

    bool waitForMoreThan(int count) {
        return waitUntil([&] { return changes > count; }, longRead);
    }

    std::atomic<int> changes{0};

private:
    const DeviceNotificationSource source = systemPlatform().deviceNotifications;
    bool listening = false;
    std::thread thread;
};

} // namespace

TEST(HidrawNotifications, TellOfABoardThatComesAndOfOneThatGoes) {
    NotificationListener listener;
    UhidBoard board;
    ASSERT_TRUE(listener.waitForMoreThan(0));
    const int before = listener.changes;
    board.unplug();
    EXPECT_TRUE(listener.waitForMoreThan(before));
}

TEST(HidrawNotifications, EndWhenTold) {
    const NotificationListener listener;
    EXPECT_EQ(listener.changes, 0);
}
