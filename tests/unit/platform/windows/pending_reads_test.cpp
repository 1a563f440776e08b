// The system may write to the memory of a pending read until long after its reader has gone.

#include "platform/windows/hid_device.h"
#include "tests/support/windows/board_pipe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>

namespace {

using namespace std::chrono_literals;

TEST(PendingReads, MemoryOutlivesTheReaderByManyOthers) {
    auto read = std::make_unique<HidRead>();
    const std::weak_ptr<HidReadMemory> memory = read->memory;
    read.reset();
    for (int reader = 0; reader < 63; ++reader) {
        const HidRead another;
        ASSERT_FALSE(memory.expired()) << reader;
    }
    const HidRead last;
    EXPECT_FALSE(memory.expired());
}

TEST(PendingReads, MemoryOfOldReadersIsFreed) {
    std::weak_ptr<HidReadMemory> memory;
    {
        const HidRead read;
        memory = read.memory;
    }
    for (int reader = 0; reader < 64; ++reader) {
        const HidRead another;
    }
    EXPECT_TRUE(memory.expired());
}

TEST(PendingReads, EndAfterTheDeviceIsClosedInMemoryThatIsStillThere) {
    BoardPipe board;
    auto device = HidDevice::open(board.path, HidAccess::ReadWrite, HidMode::Overlapped);
    auto read = std::make_unique<HidRead>();
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(device->read(*read, 1ms).status, HidReadStatus::Timeout);
    }
    const std::shared_ptr<HidReadMemory> memory = read->memory;
    device->cancelReads();
    device.reset();
    read.reset();
    EXPECT_EQ(memory.use_count(), 2);
    for (int round = 0; round < 8; ++round) {
        board.send(std::string(32, 'x'));
    }
    board.hangUp();
    // Lets through what the system may still have for this thread.
    SleepEx(50, TRUE);
    EXPECT_TRUE(std::ranges::all_of(memory->buffer, [](std::uint8_t byte) { return byte == 0; }));
}

} // namespace
