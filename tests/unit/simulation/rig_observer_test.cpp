#include "simulation/rig/rig_observer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace {

constexpr std::chrono::seconds patience{30};

/// A rig with one board, and all that was observed of it.
class RigObserverTest : public testing::Test {
protected:
    static RigSettings settings() {
        RigSettings made;
        made.boards = {{"PFD", {}}};
        made.files = {{"config.json", R"({"hid": {"vid": "1234", "pid": "ABCD"},
                                          "mappings": {"buttonConfigPath": "buttons.json"}})"},
                      {"buttons.json", "{}"}};
        made.pace = Pace::fast();
        return made;
    }

    void SetUp() override {
        std::string error;
        ASSERT_TRUE(rig.setUp(error)) << error;
    }

    bool comes(const std::string& line) {
        return observer.pumpUntil([&] { return std::ranges::find(lines, line) != lines.end(); }, patience);
    }

    std::vector<std::string> lines;
    BridgeRig rig{settings()};
    RigObserver observer{rig, [this](const Observation& one) {
                             lines.push_back(one.stream + ' ' + one.text);
                             return true;
                         }};
};

} // namespace

TEST_F(RigObserverTest, ReportsBoardsSimulatorLogAndExit) {
    rig.plugAll();
    rig.startSimulator();
    rig.startBridge();
    EXPECT_TRUE(comes("PFD status connected"));
    EXPECT_TRUE(comes("sim opened VantrelBridgeHID"));
    EXPECT_TRUE(comes("log INFO SimConnect connected"));
    rig.endBridge();
    EXPECT_TRUE(comes("exit 0"));
}

TEST_F(RigObserverTest, FollowsASecondRunOfTheBridge) {
    for (const std::ptrdiff_t runs : {1, 2}) {
        rig.startBridge();
        EXPECT_TRUE(rig.bridge().running());
        rig.endBridge();
        EXPECT_FALSE(rig.bridge().running());
        observer.pump();
        EXPECT_EQ(std::ranges::count(lines, "exit 0"), runs);
    }
}

TEST_F(RigObserverTest, WaitsForQuietNoLongerThanTheLimit) {
    observer.waitForQuiet(std::chrono::hours(1), std::chrono::milliseconds(5));
    EXPECT_FALSE(observer.quietFor(std::chrono::hours(1)));
    observer.waitForQuiet(std::chrono::milliseconds(20), patience);
    EXPECT_TRUE(observer.quietFor(std::chrono::milliseconds(20)));
}

TEST(BridgeRig, RemovesItsFilesWithItself) {
    RigSettings settings;
    settings.files["config.json"] = "{}";
    auto rig = std::make_unique<BridgeRig>(settings);
    std::string error;
    ASSERT_TRUE(rig->setUp(error)) << error;
    const std::filesystem::path folder = rig->filesFolder();
    EXPECT_TRUE(std::filesystem::exists(folder / "config.json"));
    rig.reset();
    EXPECT_FALSE(std::filesystem::exists(folder));
}
