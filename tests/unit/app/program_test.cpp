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

TEST_F(Program, AsksOnceForTheLockOfItsName) {
    Platform records = platform();
    Lines names;
    records.host.acquireSingleInstance = [&names](const std::string& name) {
        names.push_back(name);
        return SingleInstance::AlreadyRunning;
    };
    runOn(records, {});
    EXPECT_EQ(names, Lines{R"(Local\VantrelBridgeHID.singleton)"});
}

TEST_F(Program, AFailedStartGivesOneAndLogsItsErrorAgainAsTheLastLine) {
    EXPECT_EQ(runSilently({"--console", "--config", "nowhere.json"}), 1);
    EXPECT_EQ(host.controlHandler.load(), &handleControlEvent);
    const Lines lines = log(true);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_TRUE(lines[1].starts_with("[ERROR] Config file not found: nowhere.json (default search order: "));
    EXPECT_EQ(lines[2], "[ERROR] Failed to initialize: " + lines[1].substr(std::string("[ERROR] ").size()));
    expectLogIsClosed(true);
}

TEST_F(Program, AStartThatFailsWithoutAnErrorEndsItsLastLineAtTheColon) {
    folder.write("exe/config/config.json", "{");
    folder.write("config/buttons.json", "nul");
    EXPECT_EQ(run({"--config", configPath.c_str()}), 1);
    EXPECT_EQ(log().back(), "[ERROR] Failed to initialize: ");
}

TEST_F(Program, EmptyConfigArgumentLeadsToTheSearch) {
    folder.write("exe/config/config.json", "{");
    EXPECT_EQ(run({"--config", ""}), 1);
    EXPECT_EQ(log().back(), "[ERROR] Failed to initialize: Config parse error: Unterminated object");
}

TEST_F(Program, HidTraceOptionOpensTheDebugGateAndTracesReports) {
    makeRunEnd();
    EXPECT_EQ(run({"--hid-trace", "--config", configPath.c_str()}), 0);
    EXPECT_TRUE(Logger::instance().debugEnabledNow());
    const Lines lines = log();
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [](const std::string& line) {
        return line.rfind("[DEBUG] HID OUT sim_status device=0000000000000001 ", 0) == 0;
    }));
}

TEST_F(Program, AttachesTheConsoleOnceBeforeItAsksForAnythingElse) {
    Platform records = platform();
    Lines order;
    const auto noted = [&order](const char* name, const auto& call) {
        return [&order, name, call](const auto&... arguments) {
            order.emplace_back(name);
            return call(arguments...);
        };
    };
    Host& asked = records.host;
    asked.attachConsole = noted("attachConsole", asked.attachConsole);
    asked.executablePath = noted("executablePath", asked.executablePath);
    asked.commonDataFolder = noted("commonDataFolder", asked.commonDataFolder);
    asked.environmentVariable = noted("environmentVariable", asked.environmentVariable);
    asked.acquireSingleInstance = noted("acquireSingleInstance", asked.acquireSingleInstance);
    asked.installControlHandler = noted("installControlHandler", asked.installControlHandler);
    runOn(records, {});
    ASSERT_GT(order.size(), 1U);
    EXPECT_EQ(order.front(), "attachConsole");
    EXPECT_EQ(std::count(order.begin(), order.end(), "attachConsole"), 1);
}

/// A run in console mode on a thread of its own. The end of its input doesn't stop it; a control event does, at the
/// latest in `TearDown`.
class ProgramInConsole : public Program, public testing::WithParamInterface<unsigned> {
protected:
    const ConsoleInput input{""};
    std::thread runner;
    std::atomic<bool> returned{false};
    int code = -1;

    void SetUp() override {
        Program::SetUp();
        testing::internal::CaptureStdout();
        runner = std::thread([this] {
            code = run({"--console", "--config", configPath.c_str()});
            returned = true;
        });
        // The console thread ends with its input; the application must outlive it.
        EXPECT_TRUE(waitUntil([this] { return host.threadsEnded() == 1; }));
    }

    void TearDown() override {
        if (!returned) {
            handleControlEvent(0);
        }
        runner.join();
        testing::internal::GetCapturedStdout();
        Program::TearDown();
    }
};

TEST_P(ProgramInConsole, IsStoppedByTheEvent) {
    EXPECT_FALSE(returned);
    EXPECT_TRUE(handleControlEvent(GetParam()));
    ASSERT_TRUE(waitUntil([this] { return returned.load(); }));
    EXPECT_EQ(code, 0);
    EXPECT_TRUE(logHas("[INFO] Application run loop stopped", true));
}

INSTANTIATE_TEST_SUITE_P(InterruptBreakAndClose, ProgramInConsole, testing::Values(0U, 1U, 2U));

using ProgramInConsoleUnhandled = ProgramInConsole;

TEST_P(ProgramInConsoleUnhandled, GoesOnAfterTheEvent) {
    EXPECT_FALSE(handleControlEvent(GetParam()));
    EXPECT_TRUE(waitForPolls());
    EXPECT_FALSE(returned);
}

INSTANTIATE_TEST_SUITE_P(LogOffShutdownAndUnknown, ProgramInConsoleUnhandled,
                         testing::Values(3U, 5U, 6U, std::numeric_limits<unsigned>::max()));

} // namespace
