// The contract of each system's transport, with a board that isn't a HID device.

#include "tests/unit/platform/open_board.h"

#include <algorithm>
#include <array>
#include <vector>

namespace {

using namespace std::chrono_literals;

TEST(SystemHidTransport, EnumeratesWithoutRepeatingAPath) {
    const std::vector<std::string> paths = systemPlatform().hid.enumerate();
    for (const std::string& path : paths) {
        EXPECT_EQ(std::count(paths.begin(), paths.end(), path), 1) << path;
    }
}

TEST(SystemHidTransport, DoesNotOpenWhatIsNoDevice) {
    const HidTransport hid = systemPlatform().hid;
    for (const HidMode mode : {HidMode::Synchronous, HidMode::Overlapped}) {
        EXPECT_EQ(hid.open("/no/such/device", HidAccess::ReadWrite, mode), invalidHidHandle);
        EXPECT_EQ(hid.open("", HidAccess::ReadOnly, mode), invalidHidHandle);
    }
}

class HidReading : public OpenBoard, public testing::WithParamInterface<bool> {
protected:
    void SetUp() override { openReader(GetParam()); }
};

/// Whether a reader is one of a single pending read, for each kind that the system has.
std::vector<bool> readerKinds() {
    return systemPlatform().hid.makeSinglePendingReader ? std::vector<bool>{false, true} : std::vector<bool>{false};
}

INSTANTIATE_TEST_SUITE_P(SinglePending, HidReading, testing::ValuesIn(readerKinds()));

TEST_P(HidReading, ReturnsWhatTheBoardSentEvenAShortReport) {
    for (const std::string& report : {std::string("\x01\x00\x02", 3) + std::string(29, 'x'), std::string(31, 'a')}) {
        ASSERT_TRUE(board.send(report));
        EXPECT_EQ(nextReport(), report);
    }
}

TEST_P(HidReading, FailsForEverOnceItIsCancelled) {
    EXPECT_EQ(readStatus(1ms), HidReadStatus::Timeout);
    EXPECT_EQ(statusOfReadDuring([this] { hid.cancelReads(handle); }), HidReadStatus::Failure);
    EXPECT_EQ(readStatus(1h), HidReadStatus::Failure);
}

TEST_P(HidReading, FailsAfterCancellingEvenWithAReportWaiting) {
    hid.cancelReads(handle);
    ASSERT_TRUE(board.send("x"));
    EXPECT_EQ(readStatus(1h), HidReadStatus::Failure);
    EXPECT_EQ(readStatus(1h), HidReadStatus::Failure);
}

TEST_P(HidReading, FailsWhenTheBoardIsPulled) {
    EXPECT_EQ(readStatus(1ms), HidReadStatus::Timeout);
    EXPECT_EQ(statusOfReadDuring([this] { board.hangUp(); }), HidReadStatus::Failure);
    EXPECT_EQ(readStatus(1h), HidReadStatus::Failure);
}

class HidWriting : public OpenBoard {
protected:
    HidWriting() { handle = hid.open(board.path, HidAccess::ReadWrite, HidMode::Synchronous); }

    void expectFailure(const HidWriteResult& result) const {
        EXPECT_FALSE(result.ok);
        EXPECT_EQ(result.count, 0U);
        EXPECT_NE(result.error, 0U);
    }

    void expectNoAnswerToHidRequests() {
        HidAttributes attributes{1, 2};
        std::string serial = "unchanged";
        EXPECT_FALSE(hid.attributes(handle, attributes));
        EXPECT_EQ(attributes.vendorId, 1);
        EXPECT_EQ(attributes.productId, 2);
        EXPECT_FALSE(hid.serialNumber(handle, serial));
        EXPECT_EQ(serial, "unchanged");
        EXPECT_FALSE(hid.getFeature(handle, report));
        expectFailure(hid.setOutputReport(handle, report));
    }

    std::array<std::uint8_t, 32> report{0x11, 0x01};
};

TEST_F(HidWriting, SendsTheReportAsItIs) {
    report[31] = 0x7F;
    const HidWriteResult result = hid.write(handle, report);
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.count, 32U);
    EXPECT_EQ(result.error, 0U);
    EXPECT_EQ(board.receive(), std::string(report.begin(), report.end()));
}

TEST_F(HidWriting, GivesTheSystemsErrorWhenItFails) {
    board.hangUp();
    expectFailure(hid.write(handle, report));
}

TEST_F(HidWriting, HidRequestsFailOnWhatIsNoHidDevice) {
    expectNoAnswerToHidRequests();
}

TEST_F(HidWriting, NothingWorksAfterClosing) {
    reader = hid.makeReader(handle);
    hid.close(handle);
    expectNoAnswerToHidRequests();
    expectFailure(hid.write(handle, report));
    EXPECT_EQ(hid.write(handle, report).error, closedHandleError);
    EXPECT_EQ(readStatus(1h), HidReadStatus::Failure);
    hid.cancelReads(handle);
}

} // namespace
