#include "platform/worker.h"

#include "tests/support/fake_host.h"

#include <gtest/gtest.h>

namespace {

class WorkerTest : public testing::Test {
protected:
    ~WorkerTest() override { stop(); }

    /// A worker that counts its start and waits until it is stopped.
    bool start() {
        return worker.start(
            host.record(),
            [this] {
                sawRunning = worker.running();
                ++bodies;
                while (worker.running()) {
                    std::this_thread::yield();
                }
            },
            "No worker: ", error);
    }

    bool stop() {
        const bool wasRunning = worker.requestStop();
        worker.join();
        return wasRunning;
    }

    FakeHost host;
    Worker worker;
    std::string error;
    std::atomic<bool> sawRunning{false};
    std::atomic<int> bodies{0};
};

TEST_F(WorkerTest, RunsFromStartToItsOnlyStop) {
    EXPECT_FALSE(stop());
    ASSERT_TRUE(start());
    EXPECT_TRUE(worker.running());
    ASSERT_TRUE(waitUntil([this] { return bodies == 1; }));
    EXPECT_TRUE(sawRunning);
    EXPECT_TRUE(stop());
    EXPECT_FALSE(worker.running());
    EXPECT_EQ(host.threadsEnded(), 1U);
    EXPECT_FALSE(stop());
    EXPECT_EQ(error, "");
}

TEST_F(WorkerTest, StartsAgainAfterAStop) {
    for (const int round : {1, 2}) {
        ASSERT_TRUE(start());
        ASSERT_TRUE(waitUntil([&] { return bodies == round; }));
        stop();
    }
}

TEST_F(WorkerTest, StartsAfterARefusalThatLeavesNothingRunning) {
    host.refuseThreadsAfter(0);
    EXPECT_FALSE(start());
    EXPECT_EQ(error, "No worker: " + FakeHost::refusalText());
    EXPECT_FALSE(worker.running());
    EXPECT_FALSE(stop());
    EXPECT_EQ(bodies, 0);
    host.refuseThreadsAfter(1);
    EXPECT_TRUE(start());
    EXPECT_TRUE(waitUntil([this] { return bodies == 1; }));
}

} // namespace
