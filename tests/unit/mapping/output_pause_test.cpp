#include "tests/unit/mapping/output_fixture.h"

using std::vector;

/// A board whose lights are its own for a while.
class OutputPause : public OutputTest {
protected:
    /// A board that has no id and goes by its serial number. It sorts before the others.
    std::shared_ptr<VirtualBoard> connectBoardNamed(const std::string& serial) {
        VirtualBoardModel model;
        model.boardId.reset();
        model.serial = serial;
        auto board = std::make_shared<VirtualBoard>(model);
        bus.plug(board, "port0");
        hid.scanDevices();
        return board;
    }
};

TEST_F(OutputPause, NoticeKeepsTheWorkerOffItsBoardAlone) {
    engineHost.setNow(0);
    start();
    auto board = connectBoard(1);
    auto other = connectBoard(2);
    engine.requestOutputUpdate();
    ASSERT_TRUE(waitForLights(*other, {disconnectedFlash}));
    board->notice();
    ++submitted;
    ASSERT_TRUE(drain());
    engineHost.setNow(1500 * msNs - 1);
    setConnected(true);
    ASSERT_TRUE(waitForLights(*other, {disconnectedFlash, steady(80)}));
    EXPECT_EQ(lights(*board), vector<LedCommand>{disconnectedFlash});
    engineHost.setNow(1500 * msNs);
    engine.requestOutputUpdate();
    EXPECT_TRUE(waitForLights(*board, {disconnectedFlash, steady(80)}));
}

TEST_F(OutputPause, StateIsWrittenAgainAfterItThoughItNeverChanged) {
    engineHost.setNow(0);
    start();
    auto board = connectBoard(1);
    engine.requestOutputUpdate();
    ASSERT_TRUE(waitForLights(*board, {disconnectedFlash}));
    handle({.type = 4}, boardName(1), 0);
    engineHost.setNow(1500 * msNs);
    // No request: the refresh does it.
    EXPECT_TRUE(waitForLights(*board, {disconnectedFlash, disconnectedFlash}));
}

TEST_F(OutputPause, LaterNoticeExtendsIt) {
    engineHost.setNow(0);
    start();
    auto board = connectBoard(1);
    auto witness = connectBoard(2);
    handle({.type = 4}, boardName(1), 0);
    engineHost.setNow(1000 * msNs);
    handle({.type = 4}, boardName(1), 0);
    engineHost.setNow(2500 * msNs - 1);
    engine.requestOutputUpdate();
    ASSERT_TRUE(waitForLights(*witness, {disconnectedFlash}));
    EXPECT_EQ(lights(*board), vector<LedCommand>{});
    engineHost.setNow(2500 * msNs);
    engine.requestOutputUpdate();
    EXPECT_TRUE(waitForLights(*board, {disconnectedFlash}));
}

TEST_F(OutputPause, EarlierDeadlineNeverShortensIt) {
    engineHost.setNow(1000 * msNs);
    start();
    auto board = connectBoard(1);
    auto witness = connectBoard(2);
    handle({.type = 4}, boardName(1), 0);
    engineHost.setNow(0);
    handle({.type = 4}, boardName(1), 0);
    engineHost.setNow(2500 * msNs - 1);
    engine.requestOutputUpdate();
    ASSERT_TRUE(waitForLights(*witness, {disconnectedFlash}));
    EXPECT_EQ(lights(*board), vector<LedCommand>{});
}

TEST_F(OutputPause, HoldOfTheSwapKeyStartsIt) {
    engineHost.setNow(0);
    addControl(50, " nav_\tSwap", R"("PRESS":{"":"SWAP"})");
    start();
    auto board = connectBoard(1);
    auto witness = connectBoard(2);
    handle(button(50, 3), boardName(1), 0);
    engine.requestOutputUpdate();
    ASSERT_TRUE(waitForLights(*witness, {disconnectedFlash}));
    EXPECT_EQ(lights(*board), vector<LedCommand>{});
}

TEST_F(OutputPause, NothingElseStartsIt) {
    engineHost.setNow(0);
    addControl(50, "NAV_SWAP", R"("PRESS":{"":"SWAP"})");
    addControl(51, "NAV_SWAPS", R"("PRESS":{"":"SWAP"})");
    eventMap.controlIds[52] = "NAV SWAP";
    start();
    auto board = connectBoard(1);
    handle(button(50, 1), boardName(1), 0);
    handle(button(50, 0), boardName(1), 0);
    handle(button(50, 5), boardName(1), 0);
    handle(encoder(50, 2), boardName(1), 0);
    handle(button(51, 2), boardName(1), 0);
    handle(button(52, 2), boardName(1), 0);
    handle({.type = 3, .controlId = 50, .value = 2}, boardName(1), 0);
    engine.requestOutputUpdate();
    EXPECT_TRUE(waitForLights(*board, {disconnectedFlash}));
}

TEST_F(OutputPause, HoldOfAnUnlistedSwapKeyDoesNotStartIt) {
    engineHost.setNow(0);
    eventMap.controlIds[50] = "NAV_SWAP";
    start();
    auto board = connectBoard(1);
    handle(button(50, 2), boardName(1), 0);
    engine.requestOutputUpdate();
    EXPECT_TRUE(waitForLights(*board, {disconnectedFlash}));
}

TEST_F(OutputPause, NoticeOfANamelessBoardOnlyMakesItsLightBeWrittenAgain) {
    engineHost.setNow(0);
    start();
    auto board = connectBoard(1);
    engine.requestOutputUpdate();
    ASSERT_TRUE(waitForLights(*board, {disconnectedFlash}));
    // The pause is the number's, and the board has a name; the cache is found by the number.
    handle({.type = 4}, "", 0);
    engine.requestOutputUpdate();
    EXPECT_TRUE(waitForLights(*board, {disconnectedFlash, disconnectedFlash}));
}

TEST_F(OutputPause, NoticeOfANamelessBoardPausesTheBoardNamedLikeItsNumber) {
    engineHost.setNow(0);
    start();
    auto witness = connectBoard(2);
    auto board = connectBoardNamed("#0");
    ASSERT_EQ(hid.listDevices().front().deviceName, "#0");
    // The number is the witness's, whose pause would be under its name.
    ASSERT_EQ(hid.listDevices().back().index, 0);
    handle({.type = 4}, "", 0);
    engine.requestOutputUpdate();
    ASSERT_TRUE(waitForLights(*witness, {disconnectedFlash}));
    EXPECT_EQ(lights(*board), vector<LedCommand>{});
    engineHost.setNow(1500 * msNs);
    engine.requestOutputUpdate();
    EXPECT_TRUE(waitForLights(*board, {disconnectedFlash}));
}

TEST_F(OutputPause, NoticeOfANamelessBoardOfAnotherNumberPausesNobody) {
    engineHost.setNow(0);
    start();
    auto board = connectBoardNamed("#0");
    handle({.type = 4}, "", 1);
    engine.requestOutputUpdate();
    EXPECT_TRUE(waitForLights(*board, {disconnectedFlash}));
}

TEST_F(OutputPause, SurvivesAStopOfTheEngine) {
    engineHost.setNow(0);
    start();
    auto board = connectBoard(1);
    auto witness = connectBoard(2);
    handle({.type = 4}, boardName(1), 0);
    engine.stop();
    ASSERT_TRUE(startEngine());
    engine.requestOutputUpdate();
    ASSERT_TRUE(waitForLights(*witness, {disconnectedFlash}));
    EXPECT_EQ(lights(*board), vector<LedCommand>{});
}
