#include "simulation/simulator/pipe_listener.h"

#include "tests/support/transport.h"
#include "tests/support/wait_until.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

class PipeListenerTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(listener.listen(error)) << error; }

    Pipe connect() const { return connectPipe(".", name, std::chrono::seconds(30)); }
    Pipe accept() {
        Pipe accepted;
        EXPECT_TRUE(waitUntil([&] {
            accepted = listener.accept();
            return accepted.valid();
        }));
        return accepted;
    }

    std::string error;
    std::string name = freePipeName();
    PipeListener listener{name, 0};
};

} // namespace

TEST_F(PipeListenerTest, FailsWhereAnotherListensAndWithANameThatIsTooLong) {
    PipeListener second(name, 0);
    EXPECT_FALSE(second.listen(error));
    EXPECT_EQ(error, "Failed to listen on pipe " + name + ": another program has it");
    EXPECT_FALSE(second.accept().valid());
    EXPECT_FALSE(PipeListener(std::string(70000, 'x'), 0).listen(error));
    EXPECT_TRUE(error.starts_with("Failed to listen on pipe xxx"));
}

TEST_F(PipeListenerTest, TakesManyClientsAtOnceAndListensAgainBesideThem) {
    std::vector<Pipe> ends;
    for (int i = 0; i < 40; ++i) {
        ends.push_back(connect());
        ASSERT_TRUE(ends.back().valid());
        ends.push_back(accept());
    }
    EXPECT_FALSE(listener.accept().valid());
    listener.close();
    EXPECT_FALSE(listener.valid());
    EXPECT_TRUE(listener.listen(error)) << error;
    EXPECT_TRUE(connect().valid());
}
