#include "tests/unit/app/app_fixture.h"

namespace {

using Lines = std::vector<std::string>;

class AppInit : public AppTest {
protected:
    /// Fails to initialize, and leaves no thread running and no board open.
    void expectFailure(const std::string& path) {
        error.clear();
        App app(platform());
        EXPECT_FALSE(app.init(path, false, error));
        EXPECT_EQ(host.threadsEnded(), host.threadsStarted());
        EXPECT_EQ(bus.openHandleCount(), 0U);
    }

    void initAndStop() {
        App app(platform());
        start(app);
        EXPECT_EQ(error, "");
        runAndStop(app);
    }
};

TEST_F(AppInit, MissingConfigurationNamesThePathAndTheKnownCandidates) {
    // With neither folder known the log goes to the current one.
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(FileSystem::fromBytes(folder.path()));
    const std::string beside = FileSystem::join(FileSystem::join(folder.path("exe"), "config"), "config.json");
    const std::string inData = FileSystem::join(FileSystem::join(folder.path("data"), "VantrelBridge"), "config.json");
    const std::string missing = "Config file not found: nowhere.json";
    expectFailure("nowhere.json");
    EXPECT_EQ(error, missing + " (default search order: " + beside + "; " + inData + ")");
    EXPECT_EQ(log(), (Lines{"[INFO] Initializing application", "[ERROR] " + error}));
    host.executable.clear();
    expectFailure("nowhere.json");
    EXPECT_EQ(error, missing + " (default search order: " + inData + ")");
    host.dataFolder.clear();
    expectFailure("nowhere.json");
    EXPECT_EQ(error, missing);
    Logger::instance().close();
    std::filesystem::current_path(before);
    EXPECT_TRUE(FileSystem::exists(folder.path("VantrelBridgeHID.log")));
}

TEST_F(AppInit, UnreadableConfigurationIsTheLoadersErrorOnce) {
    folder.write("config/config.json", "{");
    expectFailure(configPath);
    EXPECT_EQ(error, "Config parse error: Unterminated object");
    EXPECT_EQ(log(), (Lines{"[INFO] Initializing application", "[ERROR] " + error}));
    EXPECT_EQ(host.threadsStarted(), 0U);
}

TEST_F(AppInit, NoticeAboutTheSystemIsAWarning) {
    folder.write("config/config.json", "{");
    Platform withNotice = platform();
    withNotice.host.systemNotice = [] { return std::string("too old"); };
    App app(withNotice);
    EXPECT_FALSE(app.init(configPath, false, error));
    EXPECT_EQ(log(), (Lines{"[INFO] Initializing application", "[WARN] too old", "[ERROR] " + error}));
}

TEST_F(AppInit, BrokenButtonTableIsFatalAfterABrokenEventMapAndLeavesTheErrorEmpty) {
    folder.write("config/map.json", "[]");
    folder.write("config/buttons.json", "nul");
    expectFailure(configPath);
    EXPECT_EQ(error, "");
    EXPECT_EQ(log(), (Lines{"[INFO] Initializing application", "[INFO] Configuration loaded",
                            "[WARN] Failed to load HID event map: Event map root must be an object",
                            "[ERROR] Failed to load button config: Button config parse error: Invalid null"}));
    EXPECT_EQ(host.threadsStarted(), 0U);
}

TEST_F(AppInit, EventMapIsOptional) {
    std::filesystem::remove(FileSystem::fromBytes(folder.path("config/map.json")));
    initAndStop();
    EXPECT_TRUE(logHas("[INFO] HID manager started"));
    // Without a path there is nothing to warn of.
    folder.write("config/config.json",
                 R"({"hid":{"vid":"1234","pid":"ABCD"},"mappings":{"buttonConfigPath":"buttons.json"}})");
    initAndStop();
    Lines warnings = log();
    std::erase_if(warnings, [](const std::string& line) { return !line.starts_with("[WARN]"); });
    EXPECT_EQ(warnings, (Lines{"[WARN] Failed to load HID event map: Event map not found: " +
                               FileSystem::join(folder.path("config"), "map.json")}));
}

TEST_F(AppInit, DebugLinesNeedTheFileOrTheOption) {
    const struct {
        const char* members;
        std::optional<bool> option;
        bool debug;
    } cases[] = {
        {R"(,"logging":{"debug":0.5})", std::nullopt, false},
        {R"(,"logging":{"debug":1})", std::nullopt, true},
        {R"(,"logging":{"debug":0})", true, true},
        {R"(,"logging":{"debug":1})", false, true},
    };
    for (const auto& each : cases) {
        configPath = writeConfig(each.members);
        App app(platform());
        if (each.option) {
            app.setHidTraceOverride(*each.option);
        }
        start(app);
        EXPECT_EQ(Logger::instance().debugEnabledNow(), each.debug) << each.members;
        runAndStop(app);
    }
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
        start(app);
        runAndStop(app);
        EXPECT_EQ(isSingle, single);
    }
}

TEST_F(AppInit, InvalidIdIsFatalAndItsTextAloneIsTheError) {
    folder.write("config/config.json",
                 R"({"hid":{"vid":"xyz","pid":"1"},"mappings":{"buttonConfigPath":"buttons.json"}})");
    expectFailure(configPath);
    EXPECT_EQ(error, "Invalid VID/PID");
    EXPECT_EQ(log().back(), "[ERROR] Failed to start HID manager: Invalid VID/PID");
    EXPECT_EQ(host.threadsStarted(), 3U);
}

TEST_F(AppInit, ARefusedThreadIsFatalStopsWhatRunsAndLeavesTheErrorEmpty) {
    // The engine starts three threads, the boards two and the two simulator clients one each.
    bus.plug(board);
    const std::pair<std::size_t, std::string> refusals[] = {
        {2, "mapping engine: Failed to start mapping workers: "},
        {5, "MobiFlight client: Failed to start MobiFlight worker: "},
        {6, "SimConnect client: Failed to start SimConnect worker: "},
    };
    for (const auto& [threads, reason] : refusals) {
        const std::size_t before = host.threadsStarted();
        host.refuseThreadsAfter(threads);
        expectFailure(configPath);
        EXPECT_EQ(error, "");
        EXPECT_TRUE(logHas("[ERROR] Failed to start " + reason + FakeHost::refusalText())) << reason;
        EXPECT_EQ(host.threadsStarted() - before, threads);
    }
    EXPECT_EQ(log().back(), "[INFO] HID device disconnected: 0000000000000001");
}

TEST_F(AppInit, FailedNotificationsAreAWarningAndTheScanStillFindsBoards) {
    notifications.setUpSucceeds = false;
    const std::string warning = "[WARN] Failed to register HID device notifications: ";
    initAndStop();
    EXPECT_TRUE(logHas(warning + "Failed to initialize notification thread"));
    notifications.setUpError = "RegisterDeviceNotification failed";
    App app(platform());
    start(app);
    EXPECT_TRUE(logHas(warning + "RegisterDeviceNotification failed"));
    bus.plug(board);
    EXPECT_TRUE(waitUntil([this] { return logHas("[INFO] HID device connected: 0000000000000001 index=0"); }));
    runAndStop(app);
    EXPECT_EQ(notifications.calls(), (Lines{"setUp", "setUp"}));
}

TEST_F(AppInit, CdcGivesOneWarningBeforeTheLastLine) {
    configPath = writeConfig(R"(,"cdc":{"enabled":1,"comPort":"COM3"})");
    initAndStop();
    const std::string warning = "[WARN] CDC debug requested but this build does not include CDC support";
    EXPECT_EQ(logCount(warning), 1);
    EXPECT_LT(logPosition(warning), logPosition("[INFO] HID manager started"));
}

TEST_F(AppInit, ConsoleModeLogsBesideTheExecutableAndOnStandardOutput) {
    App app(platform());
    testing::internal::CaptureStdout();
    EXPECT_FALSE(app.init(folder.path("nowhere.json"), true, error));
    EXPECT_NE(testing::internal::GetCapturedStdout().find("[INFO] Initializing application\n"), std::string::npos);
    EXPECT_FALSE(log(true).empty());
    EXPECT_TRUE(log(false).empty());
}

TEST_F(AppInit, WithoutItConstructionAndDestructionDoNothing) {
    { const App app(platform()); }
    EXPECT_EQ(host.threadsStarted(), 0U);
    EXPECT_TRUE(bus.callTexts().empty());
    EXPECT_TRUE(sim.calls().empty());
    EXPECT_TRUE(log().empty());
}

} // namespace
