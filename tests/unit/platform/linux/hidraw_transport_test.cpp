// What is particular to hidraw nodes; hid_transport_test.cpp has what all systems do.

#include "tests/support/wait_until.h"
#include "tests/unit/platform/open_board.h"

#include <pthread.h>

#include <array>
#include <atomic>
#include <csignal>
#include <thread>

namespace {

using namespace std::chrono_literals;

class HidrawTransport : public OpenBoard {
protected:
    HidHandle open(HidAccess access = HidAccess::ReadWrite, HidMode mode = HidMode::Overlapped) const {
        return hid.open(board.path, access, mode);
    }

    const HidrawTree& tree = board.tree;
};

TEST_F(HidrawTransport, EnumeratesTheNodesPath) {
    EXPECT_EQ(hid.enumerate(), std::vector<std::string>{board.path});
}

TEST_F(HidrawTransport, OpensInEachAccessAndModeSideBySide) {
    for (const HidAccess access : {HidAccess::ReadWrite, HidAccess::ReadOnly}) {
        for (const HidMode mode : {HidMode::Synchronous, HidMode::Overlapped}) {
            EXPECT_NE(open(access, mode), invalidHidHandle);
        }
    }
}

TEST_F(HidrawTransport, RefusesThePathOfABoardThatHasGoneOrWasReplugged) {
    tree.unplug(TestBoard::instance, "hidraw3");
    EXPECT_EQ(open(), invalidHidHandle);
    const std::string newPath = tree.plug("0003:2E8A:000A.0006", "hidraw3", board.device);
    EXPECT_EQ(open(), invalidHidHandle);
    EXPECT_NE(hid.open(newPath, HidAccess::ReadWrite, HidMode::Overlapped), invalidHidHandle);
}

TEST_F(HidrawTransport, RefusesANodeThatIsAnotherDeviceByNow) {
    std::filesystem::remove(tree.folder.path("dev/hidraw3"));
    tree.link("/dev/null", "dev/hidraw3");
    EXPECT_EQ(open(), invalidHidHandle);
}

TEST_F(HidrawTransport, RefusesAFileInTheNodesPlace) {
    std::filesystem::remove(tree.folder.path("dev/hidraw3"));
    tree.folder.write("dev/hidraw3", "");
    tree.writeDeviceNumber("sys/devices/usb1/" + std::string(TestBoard::instance) + "/hidraw/hidraw3", makedev(0, 0));
    EXPECT_EQ(open(), invalidHidHandle);
}

TEST_F(HidrawTransport, SerialNumberFallsBackToSysfs) {
    const PseudoTerminal other;
    const std::string path = tree.plug("0003:2E8A:000A.0008", "hidraw4", other.device, "SERIAL7");
    std::string serial;
    ASSERT_TRUE(hid.serialNumber(hid.open(path, HidAccess::ReadOnly, HidMode::Synchronous), serial));
    EXPECT_EQ(serial, "SERIAL7");
}

TEST_F(HidrawTransport, WritingToAReadOnlyHandleFails) {
    handle = open(HidAccess::ReadOnly, HidMode::Synchronous);
    EXPECT_EQ(hid.write(handle, std::array<std::uint8_t, 32>{}).error, static_cast<std::uint32_t>(EBADF));
}

TEST_F(HidrawTransport, ReadsNoMoreThan32BytesAtOnceAndGoesOnAfterATimeout) {
    openReader();
    ASSERT_TRUE(board.send(std::string(32, 'b') + std::string(8, 'c')));
    EXPECT_EQ(nextReport(), std::string(32, 'b'));
    EXPECT_EQ(nextReport(), std::string(8, 'c'));
    EXPECT_EQ(readStatus(5ms), HidReadStatus::Timeout);
    EXPECT_EQ(readStatus(0ms), HidReadStatus::Timeout);
    ASSERT_TRUE(board.send("late"));
    EXPECT_EQ(nextReport(), "late");
}

TEST_F(HidrawTransport, ReadWaitsThroughASignal) {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    struct sigaction before {};
    sigaction(SIGUSR1, &action, &before);
    openReader();
    std::atomic<bool> done{false};
    std::thread thread([&] {
        EXPECT_EQ(nextReport(), "x");
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
}

TEST_F(HidrawTransport, CancellingOneHandleLeavesTheOthersAlone) {
    hid.cancelReads(open());
    openReader();
    hid.cancelReads(open());
    ASSERT_TRUE(board.send("x"));
    EXPECT_EQ(nextReport(), "x");
}

TEST_F(HidrawTransport, ClosingReallyClosesTheNodeWhileItsReaderLives) {
    openReader();
    ASSERT_NE(hid.write(handle, std::array<std::uint8_t, 1>{'x'}).count, 0U);
    ASSERT_EQ(board.receive(), "x");
    hid.close(handle);
    // With nobody left at the other end, reading here fails instead of waiting.
    EXPECT_EQ(board.receive(), "");
}

TEST_F(HidrawTransport, TransportsDontShareHandles) {
    openReader();
    const HidReader other = makeHidrawTransport(tree.root()).makeReader(handle);
    EXPECT_EQ(other(1h).status, HidReadStatus::Failure);
    ASSERT_TRUE(board.send("x"));
    EXPECT_EQ(nextReport(), "x");
}

} // namespace
