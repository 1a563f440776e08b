#include "app/program.h"

#include "tests/unit/app/app_fixture.h"

#include <atomic>
#include <limits>
#include <thread>

namespace {

using Lines = std::vector<std::string>;

class Program : public AppTest {
protected:
    static int runOn(const Platform& records, std::vector<const char*> options) {
        options.insert(options.begin(), "VantrelBridgeHID");
        return runProgram(records, static_cast<int>(options.size()), options.data());
    }
    int run(const std::vector<const char*>& options) { return runOn(platform(), options); }

    /// As `run`, without the echo of a console run on the test's own output.
    int runSilently(const std::vector<const char*>& options) {
        testing::internal::CaptureStdout();
        const int code = run(options);
        testing::internal::GetCapturedStdout();
        return code;
    }

    /// A session that the simulator quits as soon as it is open, which ends the run.
    void makeRunEnd() {
        makeSessionPossible();
        sim.deliverQuit();
    }

    /// The log can be moved away, and the next line makes a new one.
    void expectLogIsClosed(bool console = false) const {
        EXPECT_TRUE(FileSystem::renameFile(logPath(console), folder.path("moved.log")));
        testing::internal::CaptureStdout();
        logInfo("next");
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(log(console), Lines{"[INFO] next"});
    }
};

TEST_F(Program, ARunThatEndsInOrderGivesZero) {
    makeRunEnd();
    EXPECT_EQ(run({"--config", configPath.c_str()}), 0);
    EXPECT_EQ(log().back(), "[INFO] Application run loop stopped");
    expectLogIsClosed();
    EXPECT_EQ(host.controlHandler.load(), nullptr);
    EXPECT_FALSE(Logger::instance().debugEnabledNow());
}

TEST_F(Program, ASecondInstanceGivesZeroAndTouchesNothing) {
    host.instance = SingleInstance::AlreadyRunning;
    EXPECT_EQ(run({"--config", "nowhere.json"}), 0);
    EXPECT_EQ(run({"--console", "--config", configPath.c_str()}), 0);
    EXPECT_FALSE(FileSystem::exists(host.dataFolder));
    EXPECT_FALSE(FileSystem::exists(logPath(true)));
    EXPECT_EQ(host.threadsStarted(), 0U);
    EXPECT_EQ(host.controlHandler.load(), nullptr);
    EXPECT_EQ(host.consoleAttachments, 2);
}

TEST_F(Program, ALockThatCannotBeHadDoesNotKeepTheProgramFromRunning) {
    host.instance = SingleInstance::Unavailable;
    makeRunEnd();
    EXPECT_EQ(run({"--config", configPath.c_str()}), 0);
    EXPECT_TRUE(logHas("[INFO] Application run loop started"));
}

TEST_F(Program, AFailedStartGivesOneAndLogsItsErrorAgainAsTheLastLine) {
    EXPECT_EQ(runSilently({"--console", "--config", "nowhere.json"}), 1);
    EXPECT_EQ(host.controlHandler.load(), &handleControlEvent);
    const Lines lines = log(true);
    ASSERT_EQ(lines.size(), 3U);
    const std::string reason = "Config file not found: nowhere.json (default search order: ";
    EXPECT_TRUE(lines[1].starts_with("[ERROR] " + reason));
    EXPECT_TRUE(lines[2].starts_with("[ERROR] Failed to initialize: " + reason));
    expectLogIsClosed(true);
}

TEST_F(Program, AStartThatFailsWithoutAnErrorEndsItsLastLineAtTheColon) {
    folder.write("config/buttons.json", "nul");
    EXPECT_EQ(run({"--config", configPath.c_str()}), 1);
    EXPECT_EQ(log().back(), "[ERROR] Failed to initialize: ");
}

TEST_F(Program, EmptyConfigArgumentLeadsToTheSearch) {
    folder.write("exe/config/config.json", "{");
    EXPECT_EQ(run({"--config", ""}), 1);
    EXPECT_EQ(log().back(), "[ERROR] Failed to initialize: Config parse error: Unterminated object");
}

TEST_F(Program, HidTraceOptionTracesReports) {
    makeRunEnd();
    EXPECT_EQ(run({"--hid-trace", "--config", configPath.c_str()}), 0);
    const Lines lines = log();
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [](const std::string& line) {
        return line.starts_with("[DEBUG] HID OUT sim_status device=0000000000000001 ");
    }));
}

TEST_F(Program, AttachesTheConsoleThenLooksForItsConfigurationThenTakesTheLockOfItsName) {
    Platform records = platform();
    Lines order;
    records.host.attachConsole = [&order] { order.emplace_back("attachConsole"); };
    records.host.executablePath = [&order] {
        order.emplace_back("executablePath");
        return std::string();
    };
    records.host.acquireSingleInstance = [&order](const std::string& name) {
        order.push_back(name);
        return SingleInstance::AlreadyRunning;
    };
    runOn(records, {});
    EXPECT_EQ(order, (Lines{"attachConsole", "executablePath", R"(Local\VantrelBridgeHID.singleton)"}));
}

class ProgramInConsole : public Program, public testing::WithParamInterface<unsigned> {};

TEST_P(ProgramInConsole, IsStoppedByInterruptBreakAndCloseAlone) {
    const ConsoleInput input("");
    std::atomic<int> code{-1};
    std::thread runner([&] { code = runSilently({"--console", "--config", configPath.c_str()}); });
    // The console thread ends with its input; the application must outlive it.
    EXPECT_TRUE(waitUntil([this] { return host.threadsEnded() == 1; }));
    for (const unsigned event : {3U, 5U, 6U, std::numeric_limits<unsigned>::max()}) {
        EXPECT_FALSE(handleControlEvent(event)) << event;
    }
    EXPECT_TRUE(waitForPolls());
    EXPECT_EQ(code, -1);
    EXPECT_TRUE(handleControlEvent(GetParam()));
    runner.join();
    EXPECT_EQ(code, 0);
    EXPECT_TRUE(logHas("[INFO] Application run loop stopped", true));
}

INSTANTIATE_TEST_SUITE_P(Events, ProgramInConsole, testing::Values(0U, 1U, 2U));

} // namespace
