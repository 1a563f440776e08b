// Once a device is closed, the system must not write any more to the memory of reads that were left pending.

#include "platform/windows/hid_device.h"
#include "tests/support/windows/board_pipe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <new>
#include <string>
#include <thread>

namespace {

using namespace std::chrono_literals;

constexpr unsigned char untouched = 0xA5;

/// Memory of its own for what a read needs, so that a write to it shows after the read is destroyed.
class WatchedRead {
public:
    WatchedRead() = default;
    ~WatchedRead() { destroy(); }
    WatchedRead(const WatchedRead&) = delete;
    WatchedRead& operator=(const WatchedRead&) = delete;

    HidRead& operator*() const { return *read; }

    void destroy() {
        if (read != nullptr) {
            read->~HidRead();
            std::fill(std::begin(memory), std::end(memory), untouched);
        }
        read = nullptr;
    }

    bool isUntouched() const {
        const volatile unsigned char* bytes = memory;
        for (std::size_t i = 0; i < sizeof memory; ++i) {
            if (bytes[i] != untouched) {
                return false;
            }
        }
        return true;
    }

private:
    alignas(HidRead) unsigned char memory[sizeof(HidRead)];
    HidRead* read = new (memory) HidRead;
};

class PendingReads : public testing::Test {
protected:
    PendingReads() { EXPECT_NE(device, nullptr); }

    HidReadStatus readStatus(std::chrono::milliseconds limit) { return device->read(*read, limit).status; }

    /// Three reads that nobody answers. This thread lives on, since the end of a thread would end its reads, too.
    void leavePending() {
        for (int round = 0; round < 3; ++round) {
            EXPECT_EQ(readStatus(1ms), HidReadStatus::Timeout);
        }
    }

    /// A read that can't be issued, with those of before still pending.
    void failToRead() {
        CloseHandle((*read).event);
        EXPECT_EQ(readStatus(1ms), HidReadStatus::Failure);
        (*read).event = nullptr;
    }

    /// Closes the device and frees the read as the end of a session does. Whatever the board does then leaves the
    /// memory untouched.
    void expectNothingTouchedAfterTheEnd() {
        device.reset();
        read.destroy();
        for (int round = 0; round < 8; ++round) {
            board.send(std::string(32, 'x'));
        }
        board.hangUp();
        // Lets through what the system may still have for this thread.
        SleepEx(50, TRUE);
        EXPECT_TRUE(read.isUntouched());
    }

    BoardPipe board;
    std::unique_ptr<HidDevice> device = HidDevice::open(board.path, HidAccess::ReadWrite, HidMode::Overlapped);
    WatchedRead read;
};

TEST_F(PendingReads, TouchNothingAfterCancellingAndClosing) {
    leavePending();
    device->cancelReads();
    expectNothingTouchedAfterTheEnd();
}

TEST_F(PendingReads, TouchNothingAfterClosingAlone) {
    leavePending();
    expectNothingTouchedAfterTheEnd();
}

TEST_F(PendingReads, TouchNothingAfterClosingWhenThereIsOneAlone) {
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(device->readSinglePending(*read, 1ms).status, HidReadStatus::Timeout);
    }
    expectNothingTouchedAfterTheEnd();
}

TEST_F(PendingReads, TouchNothingAfterAFailedReadBehindThem) {
    leavePending();
    failToRead();
    // The session is stalled, and the board goes on sending to memory that must still be there.
    EXPECT_TRUE(board.send("a"));
    device->cancelReads();
    expectNothingTouchedAfterTheEnd();
}

TEST_F(PendingReads, TouchNothingAfterAReaderThreadThatEndedOnAFailure) {
    std::thread([this] {
        leavePending();
        failToRead();
    }).join();
    EXPECT_TRUE(board.send("a"));
    expectNothingTouchedAfterTheEnd();
}

TEST_F(PendingReads, TouchNothingWhenTheBoardWasPulledFirst) {
    leavePending();
    board.hangUp();
    EXPECT_EQ(readStatus(1h), HidReadStatus::Failure);
    expectNothingTouchedAfterTheEnd();
}

} // namespace
