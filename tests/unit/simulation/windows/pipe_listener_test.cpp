#include "simulation/simulator/pipe_listener.h"

#include "tests/support/transport.h"
#include "tests/support/wait_until.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

constexpr std::chrono::seconds limit{30};

TEST(PipeListener, FailsWhereAnotherListens) {
    const std::string name = freePipeName();
    std::string error;
    PipeListener first(name, 0);
    ASSERT_TRUE(first.listen(error)) << error;
    PipeListener second(name, 0);
    EXPECT_FALSE(second.listen(error));
    EXPECT_EQ(error, "Failed to listen on pipe " + name + ": another program has it");
    EXPECT_FALSE(second.accept().valid());
}

TEST(PipeListener, FailsWithANameThatIsTooLong) {
    PipeListener listener(std::string(70000, 'x'), 0);
    std::string error;
    EXPECT_FALSE(listener.listen(error));
    EXPECT_TRUE(error.starts_with("Failed to listen on pipe xxx"));
}

TEST(PipeListener, TakesManyClientsAtOnce) {
    const std::string name = freePipeName();
    PipeListener listener(name, 0);
    std::string error;
    ASSERT_TRUE(listener.listen(error)) << error;
    std::vector<Pipe> clients;
    std::vector<Pipe> accepted;
    for (int i = 0; i < 40; ++i) {
        clients.push_back(connectPipe(".", name, limit));
        ASSERT_TRUE(clients.back().valid());
        ASSERT_TRUE(waitUntil([&] {
            accepted.push_back(listener.accept());
            return accepted.back().valid();
        }));
    }
    EXPECT_FALSE(listener.accept().valid());
}

TEST(PipeListener, ListensAgainWhileAnEarlierClientIsConnected) {
    const std::string name = freePipeName();
    PipeListener listener(name, 0);
    std::string error;
    ASSERT_TRUE(listener.listen(error)) << error;
    const Pipe client = connectPipe(".", name, limit);
    Pipe accepted;
    ASSERT_TRUE(waitUntil([&] {
        accepted = listener.accept();
        return accepted.valid();
    }));
    listener.close();
    EXPECT_FALSE(listener.valid());
    EXPECT_TRUE(listener.listen(error)) << error;
    EXPECT_TRUE(connectPipe(".", name, limit).valid());
}

} // namespace
