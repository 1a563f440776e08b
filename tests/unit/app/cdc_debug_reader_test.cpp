#include "app/cdc_debug_reader.h"

#include "tests/support/wait_until.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Steps = std::vector<std::string>;

class CdcReader : public testing::Test {
protected:
    Steps steps;
    std::atomic<bool> cancelled{false};

    SerialPort port() {
        return {[this] {
                    steps.emplace_back("cancel");
                    cancelled = true;
                },
                [this] { steps.emplace_back("close"); }};
    }
    /// A thread that ends when its read is cancelled.
    std::thread thread() {
        return std::thread([this] {
            EXPECT_TRUE(waitUntil([this] { return cancelled.load(); }));
            steps.emplace_back("end");
        });
    }
};

TEST_F(CdcReader, StopCancelsTheReadWaitsForTheThreadAndClosesThePort) {
    CdcDebugReader reader(thread(), port());
    EXPECT_TRUE(reader.joinable());
    reader.stop();
    EXPECT_FALSE(reader.joinable());
    EXPECT_EQ(steps, (Steps{"cancel", "end", "close"}));
    reader.stop();
    EXPECT_EQ(steps.size(), 3U);
}

TEST_F(CdcReader, StopTakesAReaderWithoutThreadOrPort) {
    CdcDebugReader(std::thread(), std::nullopt).stop();
    CdcDebugReader(std::thread(), port()).stop();
    CdcDebugReader(thread(), std::nullopt).stop();
    EXPECT_EQ(steps, (Steps{"cancel", "close", "end"}));
}

} // namespace
