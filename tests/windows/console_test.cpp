// Where the bridge's output goes and its input comes from, and how a console stops it.

#include "platform/platform.h"
#include "tests/windows/installed_bridge.h"
#include "tests/windows/surviving_control_c.h"
#include "tests/windows/test_console.h"

#include <gtest/gtest.h>

#include <atomic>

namespace {

class ConsoleOfTheBridge : public testing::Test {
protected:
    ConsoleOfTheBridge() { bridge.configure(); }

    /// Starts the bridge and waits until it takes commands.
    std::unique_ptr<ChildProcess> startReady(const Streams& streams) const {
        auto process = bridge.start("--console", streams);
        EXPECT_TRUE(bridge.waitForLog(commandsLine));
        return process;
    }

    static bool endsByItself(const ChildProcess& process) {
        return waitUntil([&] { return !process.isRunning(); }, std::chrono::milliseconds(500));
    }

    InstalledBridge bridge;
    TestConsole console;
};

TEST_F(ConsoleOfTheBridge, ShowsTheLogAndTakesCommandsInAnyMixOfCase) {
    const auto process = bridge.start("--console", console.streams());
    EXPECT_TRUE(console.waitFor(startedLine)) << console.screen();
    EXPECT_TRUE(console.waitFor(commandsLine)) << console.screen();
    console.type(" quit\rBootSel\rExIt\r");
    EXPECT_EQ(process->exitCode(), 0U);
    EXPECT_TRUE(console.shows("[WARN] No HID device accepted BOOTSEL command")) << console.screen();
    EXPECT_TRUE(console.shows(stoppedLine)) << console.screen();
}

TEST_F(ConsoleOfTheBridge, GetsNothingWhenOutputIsRedirected) {
    const HANDLE file = bridge.createFile("output.txt");
    const auto process = startReady({console.input, file, console.output});
    console.type("quit\r");
    EXPECT_EQ(process->exitCode(), 0U);
    CloseHandle(file);
    const std::string output = bridge.contentOf("output.txt");
    EXPECT_NE(output.find(startedLine), std::string::npos) << output;
    EXPECT_NE(output.find(stoppedLine), std::string::npos) << output;
    EXPECT_FALSE(console.shows(startedLine)) << console.screen();
}

TEST_F(ConsoleOfTheBridge, GetsTheOutputWhenOnlyInputIsRedirected) {
    const ChildPipe input;
    const auto process = bridge.start("--console", {input.readEnd, console.output, console.output});
    EXPECT_TRUE(console.waitFor(startedLine)) << console.screen();
    input.write("QUIT\r\n");
    EXPECT_EQ(process->exitCode(), 0U);
    EXPECT_TRUE(console.shows(stoppedLine)) << console.screen();
}

// The null device is neither a file nor a pipe.
TEST_F(ConsoleOfTheBridge, IsUsedInPlaceOfTheNullDevice) {
    const HANDLE null = CreateFileA("NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    const auto process = bridge.start("--console", {null, null, null});
    EXPECT_TRUE(console.waitFor(startedLine)) << console.screen();
    console.type("quit\r");
    EXPECT_EQ(process->exitCode(), 0U);
    CloseHandle(null);
}

TEST_F(ConsoleOfTheBridge, StaysEmptyWithoutTheOption) {
    const auto process = bridge.start("", console.streams());
    EXPECT_FALSE(endsByItself(*process));
    EXPECT_EQ(console.screen(), "");
}

TEST_F(ConsoleOfTheBridge, IsNotNeeded) {
    const std::string self = '"' + FileSystem::join(FileSystem::parentPath(builtExecutable()), "unit") +
                             "\\windows-process-tests.exe\" " + std::string(startRestOption);
    ChildPipe input;
    ChildPipe output;
    const ChildProcess between(self + " \"" + bridge.executable + "\" --console",
                               {input.readEnd, output.writeEnd, nullptr}, DETACHED_PROCESS);
    EXPECT_TRUE(bridge.waitForLog(commandsLine));
    input.write("quit\n");
    EXPECT_EQ(between.exitCode(), 0U);
    EXPECT_NE(output.readAll().find(stoppedLine), std::string::npos);
}

TEST_F(ConsoleOfTheBridge, EndOfInputLeavesItRunning) {
    ChildPipe input;
    const auto process = startReady({input.readEnd, console.output, console.output});
    input.closeWriteEnd();
    EXPECT_FALSE(endsByItself(*process));
}

class ControlEvent : public ConsoleOfTheBridge {
protected:
    const SurvivingControlC controlC;
    static inline std::atomic<int> lastEvent{-1};
};

TEST_F(ControlEvent, ReachesTheHandlerWithTheSystemsNumberAndThenTheNextOneIfNotHandled) {
    systemPlatform().host.installControlHandler([](unsigned event) {
        lastEvent = static_cast<int>(event);
        return false;
    });
    SurvivingControlC::survived = 0;
    ASSERT_TRUE(SurvivingControlC::press());
    EXPECT_TRUE(waitUntil([] { return lastEvent == CTRL_C_EVENT && SurvivingControlC::survived == 1; }));
}

TEST_F(ControlEvent, EndsItInOrderWhileItsInputIsHeldOpen) {
    const ChildPipe input;
    const auto process = startReady({input.readEnd, console.output, console.output});
    ASSERT_TRUE(SurvivingControlC::press());
    EXPECT_EQ(process->exitCode(), 0U);
    EXPECT_TRUE(bridge.hasLogged(stoppedLine)) << bridge.log();
}

TEST_F(ControlEvent, GivenTwiceEndsItOnce) {
    const auto process = startReady(console.streams());
    ASSERT_TRUE(SurvivingControlC::press());
    ASSERT_TRUE(SurvivingControlC::press());
    EXPECT_EQ(process->exitCode(), 0U);
    const std::string log = bridge.log();
    EXPECT_EQ(log.find(stoppedLine), log.rfind(stoppedLine)) << log;
    EXPECT_TRUE(bridge.hasLogged(stoppedLine)) << log;
}

} // namespace
