#include "platform/platform.h"
#include "tests/support/wait_until.h"
#include "tests/support/windows/board_pipe.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <atomic>
#include <chrono>
#include <optional>
#include <string>
#include <thread>

namespace {

using namespace std::chrono_literals;

std::string text(const HidReadResult& result) {
    return {result.data.begin(), result.data.end()};
}

class HidDeviceOnWindows : public testing::Test {
protected:
    BoardPipe board;
    HidTransport hid = systemPlatform().hid;

    HidHandle open(HidMode mode = HidMode::Overlapped) const {
        return hid.open(board.path, HidAccess::ReadWrite, mode);
    }
};

TEST_F(HidDeviceOnWindows, ReaderGivesWhatCame) {
    const HidHandle handle = open();
    ASSERT_NE(handle, invalidHidHandle);
    const HidReader reader = hid.makeReader(handle);
    ASSERT_TRUE(board.send(std::string(31, 'a')));
    const HidReadResult result = reader(60s);
    EXPECT_EQ(result.status, HidReadStatus::Data);
    EXPECT_EQ(text(result), std::string(31, 'a'));
    hid.close(handle);
}

TEST_F(HidDeviceOnWindows, ReadsThatTimedOutStayPendingAndTakeTheNextReports) {
    const HidHandle handle = open();
    const HidReader reader = hid.makeReader(handle);
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(reader(1ms).status, HidReadStatus::Timeout);
    }
    // Three pending reads take three reports before anybody waits; without them the next read would give the first.
    for (const char* report : {"a", "b", "c", "d"}) {
        ASSERT_TRUE(board.send(report));
    }
    EXPECT_EQ(text(reader(60s)), "d");
    hid.cancelReads(handle);
    hid.close(handle);
}

TEST_F(HidDeviceOnWindows, SinglePendingReaderGivesEveryReportAfterTimeouts) {
    const HidHandle handle = open();
    const HidReader reader = hid.makeSinglePendingReader(handle);
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(reader(1ms).status, HidReadStatus::Timeout);
    }
    // As long as a read, since a pipe's read takes more than one message where there is room.
    for (const char letter : {'a', 'b', 'c', 'd'}) {
        ASSERT_TRUE(board.send(std::string(32, letter)));
    }
    for (const char letter : {'a', 'b', 'c', 'd'}) {
        EXPECT_EQ(text(reader(30s)), std::string(32, letter));
    }
    EXPECT_EQ(reader(1ms).status, HidReadStatus::Timeout);
    ASSERT_TRUE(board.send("e"));
    EXPECT_EQ(text(reader(30s)), "e");
    hid.cancelReads(handle);
    hid.close(handle);
}

TEST_F(HidDeviceOnWindows, CancellingEndsTheSinglePendingReadThatIsWaitedForAgain) {
    const HidHandle handle = open();
    const HidReader reader = hid.makeSinglePendingReader(handle);
    EXPECT_EQ(reader(1ms).status, HidReadStatus::Timeout);
    std::optional<HidReadStatus> status;
    std::thread thread([&] { status = reader(1h).status; });
    hid.cancelReads(handle);
    thread.join();
    EXPECT_EQ(status, HidReadStatus::Failure);
    EXPECT_EQ(reader(1h).status, HidReadStatus::Failure);
    hid.close(handle);
}

TEST_F(HidDeviceOnWindows, SinglePendingReaderFailsWhenTheBoardIsPulledOrTheHandleClosed) {
    const HidHandle handle = open();
    const HidReader reader = hid.makeSinglePendingReader(handle);
    EXPECT_EQ(reader(1ms).status, HidReadStatus::Timeout);
    board.hangUp();
    EXPECT_EQ(reader(1h).status, HidReadStatus::Failure);
    hid.close(handle);
    EXPECT_EQ(reader(1h).status, HidReadStatus::Failure);
}

TEST_F(HidDeviceOnWindows, AReportEndsTheWaitAfterEarlierTimeouts) {
    const HidHandle handle = open();
    const HidReader reader = hid.makeReader(handle);
    EXPECT_EQ(reader(1ms).status, HidReadStatus::Timeout);
    std::atomic<bool> done{false};
    HidReadStatus status = HidReadStatus::Failure;
    std::thread thread([&] {
        status = reader(1h).status;
        done = true;
    });
    // Sent until one comes while the thread waits.
    EXPECT_TRUE(waitUntil([&] { return done || !board.send("x"); }));
    hid.cancelReads(handle);
    thread.join();
    EXPECT_EQ(status, HidReadStatus::Data);
    hid.close(handle);
}

TEST_F(HidDeviceOnWindows, CancellingEndsTheReadThatWaits) {
    const HidHandle handle = open();
    const HidReader reader = hid.makeReader(handle);
    std::optional<HidReadStatus> status;
    std::thread thread([&] { status = reader(1h).status; });
    hid.cancelReads(handle);
    thread.join();
    EXPECT_EQ(status, HidReadStatus::Failure);
    hid.close(handle);
}

TEST_F(HidDeviceOnWindows, CancellingMakesLaterReadsFail) {
    const HidHandle handle = open();
    const HidReader reader = hid.makeReader(handle);
    hid.cancelReads(handle);
    EXPECT_EQ(reader(1h).status, HidReadStatus::Failure);
    hid.close(handle);
}

TEST_F(HidDeviceOnWindows, ReaderFailsWhenTheBoardIsPulled) {
    const HidHandle handle = open();
    const HidReader reader = hid.makeReader(handle);
    std::optional<HidReadStatus> status;
    std::thread thread([&] { status = reader(1h).status; });
    board.hangUp();
    thread.join();
    EXPECT_EQ(status, HidReadStatus::Failure);
    EXPECT_EQ(reader(1h).status, HidReadStatus::Failure);
    hid.close(handle);
}

TEST_F(HidDeviceOnWindows, ClosingEndsTheHandleAndItsReader) {
    const HidHandle handle = open();
    const HidReader reader = hid.makeReader(handle);
    hid.close(handle);
    EXPECT_EQ(reader(1h).status, HidReadStatus::Failure);
    EXPECT_EQ(hid.write(handle, std::array<std::uint8_t, 32>{}).error,
              static_cast<std::uint32_t>(ERROR_INVALID_HANDLE));
}

TEST_F(HidDeviceOnWindows, WritesTheReportAsItIs) {
    const HidHandle handle = open(HidMode::Synchronous);
    std::array<std::uint8_t, 32> report{0x11, 0x01};
    const HidWriteResult result = hid.write(handle, report);
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.count, 32U);
    EXPECT_EQ(result.error, 0U);
    EXPECT_EQ(board.receive(), std::string(report.begin(), report.end()));
    hid.close(handle);
}

TEST_F(HidDeviceOnWindows, FailedWriteTellsTheSystemsError) {
    const HidHandle handle = open(HidMode::Synchronous);
    board.hangUp();
    const HidWriteResult result = hid.write(handle, std::array<std::uint8_t, 32>{0x11});
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.count, 0U);
    EXPECT_NE(result.error, 0U);
    hid.close(handle);
}

TEST_F(HidDeviceOnWindows, WhatIsNoHidDeviceAnswersNoHidRequest) {
    const HidHandle handle = open(HidMode::Synchronous);
    HidAttributes attributes{1, 2};
    std::string serial = "unchanged";
    std::array<std::uint8_t, 32> report{0x20};
    EXPECT_FALSE(hid.attributes(handle, attributes));
    EXPECT_EQ(attributes.vendorId, 1);
    EXPECT_FALSE(hid.serialNumber(handle, serial));
    EXPECT_EQ(serial, "unchanged");
    EXPECT_FALSE(hid.getFeature(handle, report));
    const HidWriteResult sent = hid.setOutputReport(handle, report);
    EXPECT_FALSE(sent.ok);
    EXPECT_NE(sent.error, 0U);
    hid.close(handle);
}

} // namespace
