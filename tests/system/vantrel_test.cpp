// The companion program on real boards.

#include "config/json.h"
#include "tests/system/support/bridge_test.h"

#include <algorithm>

namespace {

/// Runs a program as somebody without rights of their own.
const std::vector<std::string> asOrdinaryUser{"/usr/bin/setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"};

class LinuxVantrel : public BridgeTest {
protected:
    /// The codes of what `vantrel doctor --json` answers about the tests' configuration, through the given program if
    /// any.
    std::vector<std::string> examine(std::vector<std::string> command = {}) const {
        const BridgeInstallation own(files(), std::nullopt);
        command.insert(command.end(),
                       {VANTREL_BUILT_EXECUTABLE, "doctor", "--json", "--config", own.path("config/config.json")});
        ChildProcess vantrel({.command = command});
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

    /// Runs `vantrel boards --all --json` with the tests' configuration, through the given program if any.
    JsonValue listBoards(std::vector<std::string> command = {}) const {
        const BridgeInstallation own(files(), std::nullopt);
        command.insert(command.end(), {VANTREL_BUILT_EXECUTABLE, "boards", "--all", "--json", "--config",
                                       own.path("config/config.json")});
        ChildProcess vantrel({.command = command});
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
