#include "platform/handle_table.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

namespace {

TEST(HandleTable, FindsWhatWasAddedAndNothingElse) {
    HandleTable<int> table;
    const HidHandle first = table.add(std::make_shared<int>(1));
    const HidHandle second = table.add(std::make_shared<int>(2));
    for (const HidHandle unknown : {HidHandle{99}, invalidHidHandle}) {
        table.remove(unknown);
        EXPECT_EQ(table.find(unknown), nullptr);
    }
    ASSERT_NE(table.find(first), nullptr);
    EXPECT_EQ(*table.find(first), 1);
    EXPECT_EQ(*table.find(second), 2);
}

TEST(HandleTable, NeverGivesAHandleTwice) {
    HandleTable<int> table;
    const HidHandle first = table.add(std::make_shared<int>(1));
    table.remove(first);
    EXPECT_NE(table.add(std::make_shared<int>(2)), first);
    EXPECT_EQ(table.find(first), nullptr);
}

TEST(HandleTable, RemovedDeviceGoesWithItsLastUser) {
    HandleTable<int> table;
    const HidHandle handle = table.add(std::make_shared<int>(7));
    auto inUse = table.find(handle);
    const std::weak_ptr<int> device = inUse;
    table.remove(handle);
    EXPECT_EQ(*inUse, 7);
    inUse.reset();
    EXPECT_TRUE(device.expired());
}

TEST(HandleTable, ThreadsGetHandlesOfTheirOwn) {
    HandleTable<int> table;
    std::atomic<int> wrong{0};
    const auto work = [&](int value) {
        for (int round = 0; round < 500; ++round) {
            const HidHandle handle = table.add(std::make_shared<int>(value));
            const auto device = table.find(handle);
            wrong += device && *device == value ? 0 : 1;
            table.remove(handle);
        }
    };
    std::thread other(work, 1);
    work(2);
    other.join();
    EXPECT_EQ(wrong, 0);
}

} // namespace
