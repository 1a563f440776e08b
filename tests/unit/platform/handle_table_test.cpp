#include "platform/handle_table.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

TEST(HandleTable, FindsWhatWasAdded) {
    HandleTable<int> table;
    const HidHandle first = table.add(std::make_shared<int>(1));
    const HidHandle second = table.add(std::make_shared<int>(2));
    ASSERT_NE(table.find(first), nullptr);
    EXPECT_EQ(*table.find(first), 1);
    EXPECT_EQ(*table.find(second), 2);
}

TEST(HandleTable, FindsNothingForTheInvalidAndForUnknownHandles) {
    HandleTable<int> table;
    table.add(std::make_shared<int>(1));
    EXPECT_EQ(table.find(invalidHidHandle), nullptr);
    EXPECT_EQ(table.find(99), nullptr);
}

TEST(HandleTable, NeverGivesAHandleTwice) {
    HandleTable<int> table;
    const HidHandle first = table.add(std::make_shared<int>(1));
    table.remove(first);
    EXPECT_NE(table.add(std::make_shared<int>(2)), first);
    EXPECT_EQ(table.find(first), nullptr);
}

TEST(HandleTable, RemovingDestroysTheDevice) {
    HandleTable<int> table;
    const auto device = std::make_shared<int>(1);
    const HidHandle handle = table.add(device);
    EXPECT_EQ(device.use_count(), 2);
    table.remove(handle);
    EXPECT_EQ(device.use_count(), 1);
}

TEST(HandleTable, RemovingAnUnknownHandleDoesNothing) {
    HandleTable<int> table;
    const HidHandle handle = table.add(std::make_shared<int>(1));
    table.remove(99);
    table.remove(invalidHidHandle);
    EXPECT_NE(table.find(handle), nullptr);
}

TEST(HandleTable, DeviceInUseOutlivesItsRemoval) {
    HandleTable<int> table;
    const HidHandle handle = table.add(std::make_shared<int>(7));
    const auto inUse = table.find(handle);
    table.remove(handle);
    EXPECT_EQ(*inUse, 7);
}

TEST(HandleTable, ThreadsGetHandlesOfTheirOwn) {
    HandleTable<int> table;
    std::atomic<int> wrong{0};
    const auto work = [&](int value) {
        for (int round = 0; round < 500; ++round) {
            const HidHandle handle = table.add(std::make_shared<int>(value));
            const auto device = table.find(handle);
            if (!device || *device != value) {
                ++wrong;
            }
            table.remove(handle);
        }
    };
    std::thread first(work, 1);
    std::thread second(work, 2);
    first.join();
    second.join();
    EXPECT_EQ(wrong, 0);
}

} // namespace
