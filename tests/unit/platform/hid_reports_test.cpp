// What each system's transport makes of an open board's reports.

#include "tests/unit/platform/open_board.h"

#include <array>
#include <vector>

namespace {

using namespace std::chrono_literals;

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

TEST_P(HidReading, FailsAfterClosing) {
    hid.close(handle);
    EXPECT_EQ(readStatus(1h), HidReadStatus::Failure);
    EXPECT_EQ(hid.write(handle, std::array<std::uint8_t, 32>{}).error, closedHandleError);
    hid.cancelReads(handle);
}

class HidWriting : public OpenBoard {
protected:
    HidWriting() { handle = hid.open(board.path, HidAccess::ReadWrite, HidMode::Synchronous); }

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
    const HidWriteResult result = hid.write(handle, report);
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.count, 0U);
    EXPECT_NE(result.error, 0U);
}

// The board of these tests isn't a HID device.
TEST_F(HidWriting, HidRequestsFailOnWhatIsNoHidDevice) {
    HidAttributes attributes{1, 2};
    std::string serial = "unchanged";
    EXPECT_FALSE(hid.attributes(handle, attributes));
    EXPECT_EQ(attributes.vendorId, 1);
    EXPECT_FALSE(hid.serialNumber(handle, serial));
    EXPECT_EQ(serial, "unchanged");
    EXPECT_FALSE(hid.getFeature(handle, report));
    const HidWriteResult sent = hid.setOutputReport(handle, report);
    EXPECT_FALSE(sent.ok);
    EXPECT_EQ(sent.count, 0U);
    EXPECT_NE(sent.error, 0U);
}

} // namespace
