// `vantrel demo` with one side of this machine's own: real boards, or a simulator that runs by itself.

#include "tests/system/support/bridge_test.h"

#include <cpp-httplib/httplib.h>

#include <regex>

namespace {

class LinuxDemo : public BridgeTest {
protected:
    void TearDown() override {
        demo->sendSignal(SIGINT);
        EXPECT_EQ(demo->waitForExit(), 0);
        BridgeTest::TearDown();
    }

    /// With the tests' configuration, and the simulator's address in its home folder.
    void startDemo(const std::string& side) {
        installation = std::make_unique<BridgeInstallation>(files(), simulator ? simulator->port() : std::nullopt);
        ChildProcessSettings settings;
        settings.command = {VANTREL_BUILT_EXECUTABLE,
                            "demo",
                            "--no-browser",
                            "--port",
                            "0",
                            side,
                            "--config",
                            installation->path("config/config.json")};
        settings.environment = {"HOME=" + installation->path("")};
        demo = std::make_unique<ChildProcess>(settings);
        const std::regex address("http://127\\.0\\.0\\.1:(\\d+)/#([0-9A-F]+)");
        std::string output;
        std::smatch match;
        ASSERT_TRUE(demo->waitForOutput([&](const std::string& text) {
            output = text;
            return std::regex_search(output, match, address);
        })) << demo->errorOutput();
        page = std::make_unique<httplib::Client>("127.0.0.1", std::stoi(match[1]));
        token = {{"X-Page-Token", match[2]}};
    }

    /// Listens as a page does, until `text` comes; false after the limit.
    bool receives(const std::string& text) {
        const auto end = std::chrono::steady_clock::now() + ChildProcess::defaultLimit;
        std::string received;
        page->Get("/api/events", token, [&](const char* piece, std::size_t length) {
            received.append(piece, length);
            return received.find(text) == std::string::npos && std::chrono::steady_clock::now() < end;
        });
        return received.find(text) != std::string::npos;
    }

    bool act(const std::string& action) {
        const httplib::Result reply = page->Post("/api/action", token, action, "application/json");
        return reply && reply->status == 200;
    }

    std::unique_ptr<ChildProcess> demo;
    std::unique_ptr<httplib::Client> page;
    httplib::Headers token;
};

} // namespace

TEST_F(LinuxDemo, TakesThisMachinesBoardsToItsOwnSimulator) {
    UhidBoard& board = plugBoard(model());
    ASSERT_NO_FATAL_FAILURE(startDemo("--real-boards"));
    ASSERT_TRUE(receives("MobiFlight client registered"));
    EXPECT_TRUE(waitForReport(board, reportOf({0x11, 1})));
    board.panel.press(commandButton);
    EXPECT_TRUE(receives("rpn (>H:BUTTON_PRESS)"));
    ASSERT_TRUE(act(R"({"do": "sim", "command": "battery off"})"));
    EXPECT_TRUE(waitForReport(board, reportOf({0x10, 2, 0, 5, 0xE8, 0x03, 50})));
}

TEST_F(LinuxDemo, TakesItsOwnBoardsToThisMachinesSimulator) {
    startSimulator();
    ASSERT_NO_FATAL_FAILURE(startDemo("--real-simulator"));
    ASSERT_TRUE(receives("MobiFlight client registered"));
    EXPECT_TRUE(receives("\"connected\": true"));
    ASSERT_TRUE(act(R"({"do": "press", "board": "PFD", "control": 20})"));
    EXPECT_TRUE(simulator->waitFor(SimulatorRecordKind::Executed, buttonCommand));
}
