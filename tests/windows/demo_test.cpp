// The page of vantrel.exe: it answers on this machine, and Ctrl+C ends the program in order.

#include "tests/support/temp_folder.h"
#include "tests/windows/installed_bridge.h"
#include "tests/windows/surviving_control_c.h"

#include <cpp-httplib/httplib.h>
#include <gtest/gtest.h>

#include <regex>

namespace {

class DemoOnWindows : public testing::Test {
protected:
    void SetUp() override {
        const std::string program = FileSystem::join(FileSystem::parentPath(builtExecutable()), "vantrel.exe");
        const HANDLE output =
            CreateFileA(outputPath.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr);
        process = std::make_unique<ChildProcess>('"' + program + "\" demo --no-browser --port 0",
                                                 Streams{nullptr, output, output});
        CloseHandle(output);
        std::smatch match;
        std::string text;
        const std::regex address("http://127\\.0\\.0\\.1:(\\d+)/#([0-9A-F]+)");
        ASSERT_TRUE(
            waitUntil([&] { return std::regex_search(text = printed(), match, address); }, std::chrono::seconds(60)))
            << text;
        port = std::stoi(match[1]);
        token = {{"X-Page-Token", match[2]}};
    }

    std::string printed() const {
        std::string text;
        FileSystem::readFile(outputPath, text);
        return text;
    }

    const TempFolder folder;
    const std::string outputPath = folder.path("output.txt");
    const SurvivingControlC controlC;
    std::unique_ptr<ChildProcess> process;
    int port = 0;
    httplib::Headers token;
};

} // namespace

TEST_F(DemoOnWindows, ServesItsPageToThisMachineAndEndsInOrderWhileATabListens) {
    httplib::Client page("127.0.0.1", port);
    const httplib::Result start = page.Get("/");
    ASSERT_TRUE(start);
    EXPECT_TRUE(start->body.starts_with("<!doctype html>"));
    const httplib::Result refused = page.Get("/api/panel");
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->status, 403);
    page.set_read_timeout(60);
    std::string received;
    // A tab that listens until the bridge has its session, then Ctrl+C, then what still comes.
    bool pressed = false;
    page.Get("/api/events", token, [&](const char* piece, std::size_t length) {
        received.append(piece, length);
        if (!pressed && received.find("MobiFlight client registered") != std::string::npos) {
            pressed = SurvivingControlC::press();
        }
        return true;
    });
    EXPECT_TRUE(pressed) << received;
    EXPECT_EQ(process->exitCode(), 0U);
    EXPECT_NE(printed().find("The virtual cockpit ends."), std::string::npos) << printed();
}
