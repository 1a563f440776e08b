#include "platform/linux/hidraw_transport.h"

#include "tests/support/wait_until.h"
#include "tests/unit/platform/linux/hidraw_tree.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <optional>
#include <thread>

namespace {

using namespace std::chrono_literals;

constexpr const char* instance = "0003:2E8A:000A.0005";

std::string text(const HidReadResult& result) {
    return {result.data.begin(), result.data.end()};
}

/// One made-up node, which takes and gives bytes but knows no HID requests.
class HidrawTransport : public testing::Test {
protected:
    HidrawTree tree;
    PseudoTerminal board;
    std::string path = tree.plug(instance, "hidraw3", board.path, "SERIAL7");
    HidTransport hid = makeHidrawTransport(tree.root());

    HidHandle openReader() const { return hid.open(path, HidAccess::ReadWrite, HidMode::Overlapped); }
    HidHandle openWriter() const { return hid.open(path, HidAccess::ReadWrite, HidMode::Synchronous); }
};

TEST_F(HidrawTransport, EnumeratesTheNodesPath) {
    EXPECT_EQ(hid.enumerate(), std::vector<std::string>{path});
}

TEST_F(HidrawTransport, OpensInEachAccessAndModeSideBySide) {
    for (const HidAccess access : {HidAccess::ReadWrite, HidAccess::ReadOnly}) {
        for (const HidMode mode : {HidMode::Synchronous, HidMode::Overlapped}) {
            EXPECT_NE(hid.open(path, access, mode), invalidHidHandle);
        }
    }
}

TEST_F(HidrawTransport, RefusesAPathThatHasGone) {
    tree.unplug(instance, "hidraw3");
    EXPECT_EQ(openReader(), invalidHidHandle);
}

TEST_F(HidrawTransport, RefusesThePathOfABoardThatWasReplugged) {
    tree.unplug(instance, "hidraw3");
    const std::string newPath = tree.plug("0003:2E8A:000A.0006", "hidraw3", board.path);
    EXPECT_EQ(openReader(), invalidHidHandle);
    EXPECT_NE(hid.open(newPath, HidAccess::ReadWrite, HidMode::Overlapped), invalidHidHandle);
}

TEST_F(HidrawTransport, RefusesANodeThatIsAnotherDeviceByNow) {
    std::filesystem::remove(tree.folder.path("dev/hidraw3"));
    tree.link("/dev/null", "dev/hidraw3");
    EXPECT_EQ(openReader(), invalidHidHandle);
}

TEST_F(HidrawTransport, RefusesAFileInTheNodesPlace) {
    std::filesystem::remove(tree.folder.path("dev/hidraw3"));
    tree.folder.write("dev/hidraw3", "");
    tree.writeDeviceNumber("sys/devices/usb1/" + std::string(instance) + "/hidraw/hidraw3", makedev(0, 0));
    EXPECT_EQ(openReader(), invalidHidHandle);
}

TEST_F(HidrawTransport, SerialNumberFallsBackToSysfs) {
    std::string serial;
    ASSERT_TRUE(hid.serialNumber(openReader(), serial));
    EXPECT_EQ(serial, "SERIAL7");
}

TEST_F(HidrawTransport, NoSerialNumberLeavesTheText) {
    const PseudoTerminal other;
    const std::string otherPath = tree.plug("0003:2E8A:000A.0008", "hidraw4", other.path);
    std::string serial = "unchanged";
    EXPECT_FALSE(hid.serialNumber(hid.open(otherPath, HidAccess::ReadOnly, HidMode::Synchronous), serial));
    EXPECT_EQ(serial, "unchanged");
}

TEST_F(HidrawTransport, WhatIsNoHidDeviceAnswersNoHidRequest) {
    const HidHandle handle = openWriter();
    HidAttributes attributes{1, 2};
    std::array<std::uint8_t, 32> report{0x20};
    EXPECT_FALSE(hid.attributes(handle, attributes));
    EXPECT_EQ(attributes.vendorId, 1);
    EXPECT_FALSE(hid.getFeature(handle, report));
    const HidWriteResult sent = hid.setOutputReport(handle, report);
    EXPECT_FALSE(sent.ok);
    EXPECT_EQ(sent.count, 0U);
    EXPECT_NE(sent.error, 0U);
}

TEST_F(HidrawTransport, WritesTheReportAsItIs) {
    std::array<std::uint8_t, 32> report{0x11, 0x01};
    report[31] = 0x7F;
    const HidWriteResult result = hid.write(openWriter(), report);
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.count, 32U);
    EXPECT_EQ(result.error, 0U);
    EXPECT_EQ(board.receive(64), std::string(report.begin(), report.end()));
}

TEST_F(HidrawTransport, FailedWriteTellsTheSystemsError) {
    const HidHandle handle = openWriter();
    board.hangUp();
    const HidWriteResult result = hid.write(handle, std::array<std::uint8_t, 32>{0x11});
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.count, 0U);
    EXPECT_EQ(result.error, static_cast<std::uint32_t>(EIO));
}

TEST_F(HidrawTransport, WritingToAReadOnlyHandleFails) {
    const HidHandle handle = hid.open(path, HidAccess::ReadOnly, HidMode::Synchronous);
    EXPECT_EQ(hid.write(handle, std::array<std::uint8_t, 32>{}).error, static_cast<std::uint32_t>(EBADF));
}

TEST_F(HidrawTransport, ReaderGivesWhatCame) {
    const HidReader reader = hid.makeReader(openReader());
    const std::string report = std::string("\x01\x00\x02", 3) + std::string(29, 'x');
    ASSERT_TRUE(board.send(report));
    const HidReadResult result = reader(60s);
    EXPECT_EQ(result.status, HidReadStatus::Data);
    EXPECT_EQ(text(result), report);
}

TEST_F(HidrawTransport, ReaderGivesShortReportsAndNoMoreThan32Bytes) {
    const HidReader reader = hid.makeReader(openReader());
    ASSERT_TRUE(board.send(std::string(31, 'a')));
    EXPECT_EQ(text(reader(60s)), std::string(31, 'a'));
    ASSERT_TRUE(board.send(std::string(32, 'b') + std::string(8, 'c')));
    EXPECT_EQ(text(reader(60s)), std::string(32, 'b'));
    EXPECT_EQ(text(reader(60s)), std::string(8, 'c'));
}

TEST_F(HidrawTransport, ReaderTellsATimeoutAndReadsOn) {
    const HidReader reader = hid.makeReader(openReader());
    EXPECT_EQ(reader(5ms).status, HidReadStatus::Timeout);
    EXPECT_EQ(reader(0ms).status, HidReadStatus::Timeout);
    ASSERT_TRUE(board.send("late"));
    EXPECT_EQ(text(reader(60s)), "late");
}

TEST_F(HidrawTransport, ReaderWaitsThroughASignal) {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    struct sigaction before {};
    sigaction(SIGUSR1, &action, &before);
    const HidReader reader = hid.makeReader(openReader());
    std::atomic<bool> done{false};
    std::string received;
    std::thread thread([&] {
        received = text(reader(60s));
        done = true;
    });
    for (int round = 0; round < 20; ++round) {
        pthread_kill(thread.native_handle(), SIGUSR1);
        std::this_thread::sleep_for(1ms);
    }
    EXPECT_FALSE(done);
    ASSERT_TRUE(board.send("x"));
    thread.join();
    sigaction(SIGUSR1, &before, nullptr);
    EXPECT_EQ(received, "x");
}

TEST_F(HidrawTransport, ReaderFailsWhenTheBoardIsPulled) {
    const HidReader reader = hid.makeReader(openReader());
    std::optional<HidReadStatus> status;
    std::thread thread([&] { status = reader(1h).status; });
    board.hangUp();
    thread.join();
    EXPECT_EQ(status, HidReadStatus::Failure);
    EXPECT_EQ(reader(1h).status, HidReadStatus::Failure);
}

TEST_F(HidrawTransport, CancellingEndsTheReadThatWaits) {
    const HidHandle handle = openReader();
    const HidReader reader = hid.makeReader(handle);
    std::optional<HidReadStatus> status;
    std::thread thread([&] { status = reader(1h).status; });
    hid.cancelReads(handle);
    thread.join();
    EXPECT_EQ(status, HidReadStatus::Failure);
}

TEST_F(HidrawTransport, CancellingMakesLaterReadsFailEvenWithDataWaiting) {
    const HidHandle handle = openReader();
    const HidReader reader = hid.makeReader(handle);
    hid.cancelReads(handle);
    ASSERT_TRUE(board.send("x"));
    EXPECT_EQ(reader(1h).status, HidReadStatus::Failure);
    EXPECT_EQ(reader(1h).status, HidReadStatus::Failure);
}

TEST_F(HidrawTransport, CancellingOneHandleLeavesTheOthersAlone) {
    const HidHandle first = openReader();
    const HidReader reader = hid.makeReader(openReader());
    hid.cancelReads(first);
    ASSERT_TRUE(board.send("x"));
    EXPECT_EQ(text(reader(60s)), "x");
}

TEST_F(HidrawTransport, ClosingEndsTheHandleAndItsReader) {
    const HidHandle handle = openReader();
    const HidReader reader = hid.makeReader(handle);
    hid.close(handle);
    EXPECT_EQ(reader(1h).status, HidReadStatus::Failure);
    EXPECT_EQ(hid.write(handle, std::array<std::uint8_t, 32>{}).error, static_cast<std::uint32_t>(EBADF));
    hid.cancelReads(handle);
    hid.close(handle);
}

TEST_F(HidrawTransport, ClosingReallyClosesTheNodeWhileItsReaderLives) {
    const HidHandle handle = openReader();
    const HidReader reader = hid.makeReader(handle);
    ASSERT_NE(hid.write(handle, std::array<std::uint8_t, 1>{'x'}).count, 0U);
    ASSERT_EQ(board.receive(8), "x");
    hid.close(handle);
    // With nobody left at the other end, reading here fails instead of waiting.
    EXPECT_EQ(board.receive(8), "");
}

TEST_F(HidrawTransport, TransportsDontShareHandles) {
    const HidHandle handle = openReader();
    const HidTransport other = makeHidrawTransport(tree.root());
    std::string serial;
    EXPECT_FALSE(other.serialNumber(handle, serial));
    EXPECT_TRUE(hid.serialNumber(handle, serial));
}

} // namespace
