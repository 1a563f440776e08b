// Reads that stay pending after their time limit, which only Windows has; hid_transport_test.cpp has the rest.

#include "tests/support/wait_until.h"
#include "tests/unit/platform/open_board.h"

#include <atomic>
#include <thread>

namespace {

using namespace std::chrono_literals;

class HidDeviceOnWindows : public OpenBoard {
protected:
    ~HidDeviceOnWindows() override { hid.cancelReads(handle); }

    void timeOut(int times) const {
        for (int round = 0; round < times; ++round) {
            EXPECT_EQ(readStatus(1ms), HidReadStatus::Timeout);
        }
    }
};

TEST_F(HidDeviceOnWindows, ReadsThatTimedOutStayPendingAndTakeTheNextReports) {
    openReader();
    timeOut(3);
    // Three pending reads take three reports before anybody waits; without them the next read would give the first.
    for (const char* report : {"a", "b", "c", "d"}) {
        ASSERT_TRUE(board.send(report));
    }
    EXPECT_EQ(nextReport(), "d");
}

TEST_F(HidDeviceOnWindows, SinglePendingReaderGivesEveryReportAfterTimeouts) {
    openReader(true);
    timeOut(3);
    // As long as a read, since a pipe's read takes more than one message where there is room.
    for (const char letter : {'a', 'b', 'c', 'd'}) {
        ASSERT_TRUE(board.send(std::string(32, letter)));
    }
    for (const char letter : {'a', 'b', 'c', 'd'}) {
        EXPECT_EQ(nextReport(), std::string(32, letter));
    }
    timeOut(1);
    ASSERT_TRUE(board.send("e"));
    EXPECT_EQ(nextReport(), "e");
}

TEST_F(HidDeviceOnWindows, AReportEndsTheWaitAfterEarlierTimeouts) {
    openReader();
    timeOut(1);
    std::atomic<bool> done{false};
    std::thread thread([&] {
        EXPECT_EQ(readStatus(1h), HidReadStatus::Data);
        done = true;
    });
    // Sent until one comes while the thread waits.
    EXPECT_TRUE(waitUntil([&] { return done || !board.send("x"); }));
    hid.cancelReads(handle);
    thread.join();
}

} // namespace
