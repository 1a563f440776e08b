#include "app/cdc_debug_reader.h"

#include "tests/support/wait_until.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

/// Nothing starts a reader yet, so the tests set the members that a start would set. An explicit instantiation may name
/// private members; the friends that it defines give the tests access.
template <auto Running, auto Thread, auto Port>
struct MemberAccess {
    friend void setRunning(CdcDebugReader& reader) { reader.*Running = true; }
    friend void equip(CdcDebugReader& reader, std::thread thread, const std::optional<SerialPort>& port) {
        reader.*Thread = std::move(thread);
        reader.*Port = port;
    }
};
void setRunning(CdcDebugReader& reader);
void equip(CdcDebugReader& reader, std::thread thread, const std::optional<SerialPort>& port);
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

TEST_F(CdcReader, StopCancelsWaitsAndClosesOnceIfTheReaderRuns) {
    equip(reader, thread(), port());
    reader.stop();
    EXPECT_EQ(steps, Steps());
    EXPECT_TRUE(reader.joinable());
    setRunning(reader);
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
    equip(reader, thread(), std::nullopt);
    setRunning(reader);
    reader.stop();
    EXPECT_EQ(steps, (Steps{"cancel", "close", "end"}));
}

} // namespace
