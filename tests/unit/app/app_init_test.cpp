#include "tests/unit/app/app_fixture.h"

namespace {

using AppInit = AppTest;

using Lines = std::vector<std::string>;

TEST_F(AppInit, MissingConfigurationNamesThePathAndBothCandidates) {
    App app(platform());
    const std::string missing = folder.path("nowhere.json");
    EXPECT_FALSE(app.init(missing, false, error));
    const std::string expected =
        "Config file not found: " + missing +
        " (default search order: " + FileSystem::join(FileSystem::join(folder.path("exe"), "config"), "config.json") +
        "; " + FileSystem::join(FileSystem::join(folder.path("data"), "VantrelBridge"), "config.json") + ")";
    EXPECT_EQ(error, expected);
    EXPECT_EQ(log(), (Lines{"[INFO] Initializing application", "[ERROR] " + expected}));
    EXPECT_EQ(host.threadsStarted(), 0U);
}

TEST_F(AppInit, MissingConfigurationNamesOnlyTheKnownCandidates) {
    host.executable.clear();
    App app(platform());
    EXPECT_FALSE(app.init("nowhere.json", false, error));
    EXPECT_EQ(error, "Config file not found: nowhere.json (default search order: " +
                         FileSystem::join(FileSystem::join(folder.path("data"), "VantrelBridge"), "config.json") + ")");
}

TEST_F(AppInit, MissingConfigurationWithNoCandidateNamesThePathAlone) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(FileSystem::fromBytes(folder.path()));
    host.executable.clear();
    host.dataFolder.clear();
    App app(platform());
    EXPECT_FALSE(app.init("nowhere.json", false, error));
    Logger::instance().close();
    std::filesystem::current_path(before);
    EXPECT_EQ(error, "Config file not found: nowhere.json");
    EXPECT_TRUE(std::filesystem::exists(FileSystem::fromBytes(folder.path("VantrelBridgeHID.log"))));
}

TEST_F(AppInit, UnreadableConfigurationIsTheLoadersErrorOnce) {
    folder.write("config/config.json", "{");
    App app(platform());
    EXPECT_FALSE(app.init(configPath, false, error));
    EXPECT_EQ(error, "Config parse error: Unterminated object");
    EXPECT_EQ(log(), (Lines{"[INFO] Initializing application", "[ERROR] Config parse error: Unterminated object"}));
}

TEST_F(AppInit, BrokenEventMapIsOnlyAWarning) {
    folder.write("config/map.json", "[]");
    App app(platform());
    ASSERT_TRUE(app.init(configPath, false, error)) << error;
    runAndStop(app);
    EXPECT_TRUE(logHas("[WARN] Failed to load HID event map: Event map root must be an object"));
    EXPECT_TRUE(logHas("[INFO] HID manager started"));
}

TEST_F(AppInit, MissingEventMapOfTheFileIsAWarningAndTheBridgeRunsOnWithoutNames) {
    // One where an event map is looked for by default must not take the place of the one that the file names.
    std::filesystem::rename(FileSystem::fromBytes(folder.path("config/map.json")),
                            FileSystem::fromBytes(folder.path("config/hid_event_map.json")));
    configPath = writeConfig(R"(,"logging":{"debug":1})");
    bus.plug(board);
    App app(platform());
    ASSERT_TRUE(app.init(configPath, false, error)) << error;
    EXPECT_EQ(error, "");
    const Lines lines = log();
    EXPECT_EQ(std::count(lines.begin(), lines.end(),
                         "[WARN] Failed to load HID event map: Event map not found: " +
                             FileSystem::join(folder.path("config"), "map.json")),
              1);
    EXPECT_TRUE(logHas("[INFO] HID manager started"));
    ASSERT_TRUE(waitUntil([this] { return bus.pendingReadCount(board) == 1; }));
    board->press(21);
    EXPECT_TRUE(waitUntil([this] {
        return logHas("[DEBUG] HID event from 0000000000000001 index=0 type=1 action=BUTTON_PRESS role=PFD "
                      "controlId=21 value=1 speed=0 mode=0");
    }));
    runAndStop(app);
}

TEST_F(AppInit, NoEventMapPathLoadsNothingAndSaysNothing) {
    std::filesystem::remove(FileSystem::fromBytes(folder.path("config/map.json")));
    folder.write("config/config.json", R"({"hid":{"vid":"1234","pid":"ABCD","scanIntervalMs":20},)"
                                       R"("mappings":{"buttonConfigPath":"buttons.json"}})");
    App app(platform());
    ASSERT_TRUE(app.init(configPath, false, error)) << error;
    runAndStop(app);
    for (const std::string& line : log()) {
        EXPECT_EQ(line.find("event map"), std::string::npos) << line;
    }
}

TEST_F(AppInit, BrokenButtonTableIsFatalAndLeavesTheErrorEmpty) {
    folder.write("config/buttons.json", "nul");
    App app(platform());
    EXPECT_FALSE(app.init(configPath, false, error));
    EXPECT_EQ(error, "");
    EXPECT_EQ(log(), (Lines{"[INFO] Initializing application", "[INFO] Configuration loaded",
                            "[ERROR] Failed to load button config: Button config parse error: Invalid null"}));
    EXPECT_EQ(host.threadsStarted(), 0U);
}

TEST_F(AppInit, BothBrokenFilesGiveTheWarningFirst) {
    folder.write("config/map.json", "");
    std::filesystem::remove(FileSystem::fromBytes(folder.path("config/buttons.json")));
    App app(platform());
    EXPECT_FALSE(app.init(configPath, false, error));
    EXPECT_EQ(log(), (Lines{"[INFO] Initializing application", "[INFO] Configuration loaded",
                            "[WARN] Failed to load HID event map: Event map parse error: Unexpected end of input",
                            "[ERROR] Failed to load button config: Button config not found: " +
                                FileSystem::join(folder.path("config"), "buttons.json")}));
}

TEST_F(AppInit, HidTraceOptionOpensTheDebugGateWhateverTheFileSays) {
    bus.plug(board);
    configPath = writeConfig(R"(,"logging":{"debug":0})");
    App app(platform());
    app.setHidTraceOverride(true);
    ASSERT_TRUE(app.init(configPath, false, error)) << error;
    EXPECT_TRUE(Logger::instance().debugEnabledNow());
    EXPECT_TRUE(waitUntil([this] { return bus.pendingReadCount(board) == 1; }));
    board->press(21);
    EXPECT_TRUE(waitUntil([this] {
        return logHas("[DEBUG] HID IN device=0000000000000001 bytes=32 data="
                      "0100010015000100000000" +
                      std::string(42, '0'));
    }));
    runAndStop(app);
}

TEST_F(AppInit, ExtensionsDecideHowBoardsAreRead) {
    bus.plug(board);
    for (const bool single : {false, true}) {
        configPath = writeConfig(single ? R"(,"extensions":{"singlePendingRead":1})" : "");
        bool isSingle = false;
        Platform records = platform();
        records.hid.makeSinglePendingReader = [&, make = records.hid.makeReader](HidHandle handle) {
            isSingle = true;
            return make(handle);
        };
        App app(records);
        ASSERT_TRUE(app.init(configPath, false, error)) << error;
        runAndStop(app);
        EXPECT_EQ(isSingle, single);
    }
}

TEST_F(AppInit, DebugStaysSilentWhenTheFileAsksForNothing) {
    configPath = writeConfig(R"(,"logging":{"debug":0.5})");
    App app(platform());
    ASSERT_TRUE(app.init(configPath, false, error)) << error;
    EXPECT_FALSE(Logger::instance().debugEnabledNow());
    runAndStop(app);
}

TEST_F(AppInit, LoggingDebugOpensTheGate) {
    configPath = writeConfig(R"(,"logging":{"debug":1})");
    App app(platform());
    ASSERT_TRUE(app.init(configPath, false, error)) << error;
    EXPECT_TRUE(Logger::instance().debugEnabledNow());
    runAndStop(app);
}

TEST_F(AppInit, InvalidIdIsFatalAndItsTextAloneIsTheError) {
    folder.write("config/config.json",
                 R"({"hid":{"vid":"xyz","pid":"1"},"mappings":{"buttonConfigPath":"buttons.json"}})");
    App app(platform());
    EXPECT_FALSE(app.init(configPath, false, error));
    EXPECT_EQ(error, "Invalid VID/PID");
    EXPECT_EQ(log().back(), "[ERROR] Failed to start HID manager: Invalid VID/PID");
}

// The engine starts three threads, the HID manager one and one a board, and the two simulator clients one each.

TEST_F(AppInit, MappingEngineWithoutThreadsIsFatalAndLeavesTheErrorEmpty) {
    host.refuseThreadsAfter(2);
    App app(platform());
    EXPECT_FALSE(app.init(configPath, false, error));
    EXPECT_EQ(error, "");
    EXPECT_EQ(log().back(),
              "[ERROR] Failed to start mapping engine: Failed to start mapping workers: " + FakeHost::refusalText());
}

TEST_F(AppInit, MobiFlightClientWithoutThreadIsFatalAndStopsWhatRan) {
    host.refuseThreadsAfter(4);
    App app(platform());
    EXPECT_FALSE(app.init(configPath, false, error));
    EXPECT_EQ(error, "");
    EXPECT_EQ(log().back(), "[ERROR] Failed to start MobiFlight client: Failed to start MobiFlight worker: " +
                                FakeHost::refusalText());
}

TEST_F(AppInit, RefusedBoardsStopTheMappingEnginesThreads) {
    folder.write("config/config.json",
                 R"({"hid":{"vid":"xyz","pid":"1"},"mappings":{"buttonConfigPath":"buttons.json"}})");
    App app(platform());
    EXPECT_FALSE(app.init(configPath, false, error));
    EXPECT_EQ(host.threadsStarted(), 3U);
    EXPECT_EQ(host.threadsEnded(), 3U);
}

TEST_F(AppInit, MobiFlightClientWithoutThreadStopsTheThreadsOfTheEngineAndTheBoards) {
    host.refuseThreadsAfter(4);
    App app(platform());
    EXPECT_FALSE(app.init(configPath, false, error));
    EXPECT_EQ(host.threadsStarted(), 4U);
    EXPECT_EQ(host.threadsEnded(), 4U);
}

TEST_F(AppInit, SimConnectClientWithoutThreadIsFatalAndStopsAllThatRan) {
    host.refuseThreadsAfter(6);
    bus.plug(board);
    App app(platform());
    EXPECT_FALSE(app.init(configPath, false, error));
    EXPECT_EQ(error, "");
    EXPECT_TRUE(logHas("[ERROR] Failed to start SimConnect client: Failed to start SimConnect worker: " +
                       FakeHost::refusalText()));
    EXPECT_EQ(log().back(), "[INFO] HID device disconnected: 0000000000000001");
    EXPECT_EQ(bus.openHandleCount(), 0U);
    EXPECT_EQ(host.threadsStarted(), 6U);
    EXPECT_EQ(host.threadsEnded(), 6U);
}

TEST_F(AppInit, FailedNotificationSetUpIsAWarningAndTheScanStillFindsBoards) {
    notifications.setUpSucceeds = false;
    notifications.setUpError = "RegisterDeviceNotification failed";
    App app(platform());
    ASSERT_TRUE(app.init(configPath, false, error)) << error;
    EXPECT_TRUE(logHas("[WARN] Failed to register HID device notifications: RegisterDeviceNotification failed"));
    bus.plug(board);
    EXPECT_TRUE(waitUntil([this] { return logHas("[INFO] HID device connected: 0000000000000001 index=0"); }));
    runAndStop(app);
    EXPECT_EQ(notifications.calls(), Lines{"setUp"});
}

TEST_F(AppInit, FailedNotificationSetUpWithoutAReasonGetsOne) {
    notifications.setUpSucceeds = false;
    App app(platform());
    ASSERT_TRUE(app.init(configPath, false, error)) << error;
    EXPECT_TRUE(logHas("[WARN] Failed to register HID device notifications: Failed to initialize notification thread"));
    runAndStop(app);
}

TEST_F(AppInit, CdcGivesOneWarningBeforeTheLastLine) {
    configPath = writeConfig(R"(,"cdc":{"enabled":1,"comPort":"COM3"})");
    App app(platform());
    ASSERT_TRUE(app.init(configPath, false, error)) << error;
    const std::string warning = "[WARN] CDC debug requested but this build does not include CDC support";
    const Lines lines = log();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), warning), 1);
    const auto position = std::find(lines.begin(), lines.end(), warning);
    EXPECT_NE(std::find(position, lines.end(), "[INFO] HID manager started"), lines.end());
    runAndStop(app);
}

TEST_F(AppInit, ConsoleModeLogsBesideTheExecutable) {
    App app(platform());
    testing::internal::CaptureStdout();
    EXPECT_FALSE(app.init(folder.path("nowhere.json"), true, error));
    const std::string echoed = testing::internal::GetCapturedStdout();
    EXPECT_NE(echoed.find("[INFO] Initializing application\n"), std::string::npos);
    EXPECT_FALSE(log(true).empty());
    EXPECT_TRUE(log(false).empty());
}

TEST_F(AppInit, ConstructionStartsAndLogsNothing) {
    const App app(platform());
    EXPECT_EQ(host.threadsStarted(), 0U);
    EXPECT_TRUE(bus.callTexts().empty());
    EXPECT_TRUE(sim.calls().empty());
}

} // namespace
