#include "simulation/rig/rig_observer.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace std::chrono_literals;

// The scenarios show what a rig does and what is observed of it.

TEST(RigObserver, WaitsForQuietNoLongerThanTheLimit) {
    BridgeRig rig({});
    RigObserver observer(rig, [](const Observation&) { return true; });
    std::string error;
    ASSERT_TRUE(rig.setUp(error)) << error;
    observer.waitForQuiet(1h, 5ms);
    EXPECT_FALSE(observer.quietFor(1h));
    observer.waitForQuiet(20ms, 30s);
    EXPECT_TRUE(observer.quietFor(20ms));
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
