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

TEST_F(WorkerTest, RunsFromStartToStop) {
    EXPECT_FALSE(worker.running());
    ASSERT_TRUE(start());
    EXPECT_TRUE(worker.running());
    ASSERT_TRUE(waitUntil([this] { return bodies == 1; }));
    EXPECT_TRUE(sawRunning);
    EXPECT_TRUE(stop());
    EXPECT_FALSE(worker.running());
    EXPECT_EQ(host.threadsEnded(), 1U);
    EXPECT_EQ(error, "");
}

TEST_F(WorkerTest, StopsOnlyOnce) {
    EXPECT_FALSE(stop());
    ASSERT_TRUE(start());
    EXPECT_TRUE(stop());
    EXPECT_FALSE(stop());
}

TEST_F(WorkerTest, StartsAgainAfterAStop) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntil([this] { return bodies == 1; }));
    stop();
    ASSERT_TRUE(start());
    EXPECT_TRUE(waitUntil([this] { return bodies == 2; }));
}

TEST_F(WorkerTest, RefusedThreadLeavesNothingRunning) {
    host.refuseThreadsAfter(0);
    EXPECT_FALSE(start());
    EXPECT_EQ(error, "No worker: " + FakeHost::refusalText());
    EXPECT_FALSE(worker.running());
    EXPECT_FALSE(stop());
    EXPECT_EQ(bodies, 0);
}

TEST_F(WorkerTest, StartsAfterARefusal) {
    host.refuseThreadsAfter(0);
    EXPECT_FALSE(start());
    host.refuseThreadsAfter(1);
    EXPECT_TRUE(start());
    EXPECT_TRUE(waitUntil([this] { return bodies == 1; }));
}

} // namespace
