// The companion program on real boards.

#include "config/json.h"
#include "tests/system/support/bridge_test.h"
#include "tests/system/support/page_process.h"
#include "tests/system/support/udev_rule.h"

#include <algorithm>
#include <csignal>
#include <filesystem>

namespace {

/// Runs a program as somebody without rights of their own.
const std::vector<std::string> asOrdinaryUser{"/usr/bin/setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"};
/// The same, but in the group of `groupRule`.
const std::vector<std::string> asUserOfTheGroup{"/usr/bin/setpriv", "--reuid=65534", "--regid=65534",
                                                "--groups=plugdev"};

/// The packaged rule for a group, but by the HID device's name: boards of uhid aren't on a USB bus.
const std::string groupRule =
    R"(KERNEL=="hidraw*", SUBSYSTEM=="hidraw", KERNELS=="*:1234:ABCD.*", GROUP="plugdev", MODE="0660")";

class LinuxVantrel : public BridgeTest {
protected:
    /// A command with the tests' configuration, through the program that runs it as another user if any.
    ChildProcessSettings command(std::vector<std::string> user, const std::vector<std::string>& words) const {
        user.emplace_back(VANTREL_BUILT_EXECUTABLE);
        user.insert(user.end(), words.begin(), words.end());
        user.insert(user.end(), {"--config", own.path("config/config.json")});
        return {.command = user};
    }

    /// The codes of what `vantrel doctor --json` answers.
    std::vector<std::string> examine(const std::vector<std::string>& user = {}) const {
        ChildProcess vantrel(command(user, {"doctor", "--json"}));
        EXPECT_EQ(vantrel.waitForExit(), 1) << vantrel.errorOutput();
        const JsonParseResult result = JsonParser::parse(vantrel.output());
        EXPECT_TRUE(result.ok) << vantrel.output();
        std::vector<std::string> codes;
        for (const JsonValue& answer : result.value.array) {
            getString(answer, "code", codes.emplace_back());
        }
        return codes;
    }

    static bool contains(const std::vector<std::string>& codes, const std::string& code) {
        return std::ranges::find(codes, code) != codes.end();
    }

    JsonValue listBoards(const std::vector<std::string>& user = {}) const {
        ChildProcess vantrel(command(user, {"boards", "--all", "--json"}));
        EXPECT_EQ(vantrel.waitForExit(), 0) << vantrel.errorOutput();
        const JsonParseResult result = JsonParser::parse(vantrel.output());
        EXPECT_TRUE(result.ok) << vantrel.output();
        return result.value;
    }

    /// The boards of the list that match, by their identity.
    static std::vector<std::string> matchingIds(const JsonValue& list) {
        std::vector<std::string> ids;
        for (const JsonValue& board : list.array) {
            std::string id;
            if (getString(board, "boardId", id)) {
                ids.push_back(id);
            }
        }
        return ids;
    }

    static bool waitForRule(const UhidBoard& board) {
        namespace fs = std::filesystem;
        const fs::path node = "/dev/" + fs::path(board.device().sysfsFolder()).filename().string();
        const auto groupMayWrite = [&] {
            return (fs::status(node).permissions() & fs::perms::group_write) != fs::perms::none;
        };
        return waitUntil(groupMayWrite, ChildProcess::defaultLimit);
    }

private:
    const BridgeInstallation own{files(), std::nullopt};
};

} // namespace

TEST_F(LinuxVantrel, ListsTheBoardsWhileTheBridgeUsesThem) {
    UhidBoard& board = plugBoard(model());
    startBridge();
    ASSERT_TRUE(waitForConnection(board, 0));
    EXPECT_EQ(matchingIds(listBoards()), std::vector{nameOf(board)});
    board.panel.press(commandButton);
    EXPECT_TRUE(bridge->waitForLog("action=BUTTON_PRESS"));
}

TEST_F(LinuxVantrel, SaysThatAnOrdinaryUserMayNotOpenABoard) {
    plugBoard(model());
    const JsonValue list = listBoards(asOrdinaryUser);
    EXPECT_TRUE(matchingIds(list).empty());
    ASSERT_FALSE(list.array.empty());
    EXPECT_FALSE(find(list.array.front(), "opens")->boolean);
}

TEST_F(LinuxVantrel, ExaminesABoardAndTheRightToOpenIt) {
    plugBoard(model());
    EXPECT_TRUE(contains(examine(), "board-answers"));
    const std::vector<std::string> ordinary = examine(asOrdinaryUser);
    EXPECT_TRUE(contains(ordinary, "board-no-rule"));
    EXPECT_FALSE(contains(ordinary, "board-answers"));
}

TEST_F(LinuxVantrel, WatchesAndLightsNothingForAnOrdinaryUserWithoutTheRule) {
    const UhidBoard& board = plugBoard(model());
    ChildProcess watch(command(asOrdinaryUser, {"watch"}));
    const std::string closed = "or you may not open it: \"vantrel boards --all\" lists every device. Waiting for one.";
    EXPECT_TRUE(waitUntil([&] { return countOf(watch.errorOutput(), closed) == 1; }, ChildProcess::defaultLimit));
    watch.sendSignal(SIGINT);
    EXPECT_EQ(watch.waitForExit(), 0);
    EXPECT_EQ(watch.output(), "");
    ChildProcess light(command(asOrdinaryUser, {"light", "0", "steady", "33"}));
    EXPECT_EQ(light.waitForExit(), 3);
    EXPECT_NE(light.errorOutput().find("there is no board \"0\""), std::string::npos);
    EXPECT_TRUE(reports(board, 0x10).empty());
}

TEST_F(LinuxVantrel, ServesWhomTheRuleAdmits) {
    const UdevRule rule(groupRule);
    UhidBoard& board = plugBoard(model());
    ASSERT_TRUE(waitForRule(board));
    EXPECT_TRUE(contains(examine(asOrdinaryUser), "board-group-missing"));
    EXPECT_TRUE(contains(examine(asUserOfTheGroup), "board-answers"));
    EXPECT_EQ(matchingIds(listBoards(asUserOfTheGroup)), std::vector{nameOf(board)});

    ChildProcess watch(command(asUserOfTheGroup, {"watch"}));
    const auto shows = [&](const std::string& text) {
        return watch.waitForOutput([&](const std::string& output) { return countOf(output, text) == 1; });
    };
    ASSERT_TRUE(shows("board " + nameOf(board) + " is there")) << watch.errorOutput();
    board.panel.press(commandButton);
    EXPECT_TRUE(shows("BUTTON (20) press: sends (>H:BUTTON_PRESS)"));

    ChildProcess light(command(asUserOfTheGroup, {"light", "0", "steady", "33"}));
    EXPECT_EQ(light.waitForExit(), 0) << light.errorOutput();
    EXPECT_TRUE(waitForReport(board, reportOf({0x10, 1, 33})));

    PageProcess setup(command(asUserOfTheGroup, {"setup"}));
    ASSERT_TRUE(setup.serves()) << setup.errorOutput();
    EXPECT_TRUE(setup.receives(nameOf(board)));
    EXPECT_EQ(setup.interrupt(), 0);
}
