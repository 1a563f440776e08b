#include "app/app_paths.h"
#include "tests/unit/app/app_fixture.h"

namespace {

/// The whole application with the sample set beside the built executable.
class AppSampleSet : public AppTest {
protected:
    void SetUp() override {
        AppTest::SetUp();
        const std::string testFolder = FileSystem::parentPath(systemPlatform().host.executablePath());
        host.executable = FileSystem::join(FileSystem::parentPath(testFolder), "VantrelBridgeHID");
    }
};

TEST_F(AppSampleSet, IsFoundWithoutAnyOptionAndStartsWithoutAComplaint) {
    makeSessionPossible();
    App app(platform());
    ASSERT_TRUE(app.init(defaultConfigPath(host.record()), false, error)) << error;
    EXPECT_TRUE(waitUntil([this] { return logHas("[INFO] SimConnect connected"); }));
    runAndStop(app);
    std::vector<std::string> complaints = log();
    std::erase_if(complaints, [](const std::string& line) { return line.starts_with("[INFO] "); });
    // The one warning is the end of the session that the test itself brings about.
    EXPECT_EQ(complaints, (std::vector<std::string>{"[WARN] SimConnect disconnected: shutdown"}));
}

} // namespace
