#include "app/cdc_debug_reader.h"

#include "tests/support/wait_until.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

/// Nothing starts a reader yet, so the tests put one into the state in which a start would leave it. An explicit
/// instantiation may name private members; the friends that it defines give them to the tests.
template <auto Running, auto Thread, auto Port>
struct MemberAccess {
    friend void setRunning(CdcDebugReader& reader) { reader.*Running = true; }
    friend void equip(CdcDebugReader& reader, std::thread thread, std::optional<SerialPort> port) {
        reader.*Thread = std::move(thread);
        reader.*Port = std::move(port);
    }
};
void setRunning(CdcDebugReader& reader);
void equip(CdcDebugReader& reader, std::thread thread, std::optional<SerialPort> port);
template struct MemberAccess<&CdcDebugReader::running, &CdcDebugReader::thread, &CdcDebugReader::port>;

using Steps = std::vector<std::string>;

class CdcReader : public testing::Test {
protected:
    CdcDebugReader reader;
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

TEST_F(CdcReader, StopLeavesAReaderThatDoesNotRun) {
    equip(reader, std::thread(), port());
    reader.stop();
    EXPECT_FALSE(reader.joinable());
    EXPECT_EQ(steps, Steps());
}

TEST_F(CdcReader, StopCancelsWaitsAndClosesOnce) {
    equip(reader, thread(), port());
    setRunning(reader);
    EXPECT_TRUE(reader.joinable());
    reader.stop();
    EXPECT_FALSE(reader.joinable());
    reader.stop();
    EXPECT_EQ(steps, (Steps{"cancel", "end", "close"}));
}

TEST_F(CdcReader, StopTakesAReaderWithoutThreadOrPort) {
    setRunning(reader);
    reader.stop();
    equip(reader, std::thread(), port());
    setRunning(reader);
    reader.stop();
    EXPECT_EQ(steps, (Steps{"cancel", "close"}));
    equip(reader, thread(), std::nullopt);
    setRunning(reader);
    reader.stop();
    EXPECT_EQ(steps, (Steps{"cancel", "close", "end"}));
}

} // namespace
