#include "simulation/boards/virtual_board.h"

#include <gtest/gtest.h>

#include <utility>

using HidProtocol::HidEvent;
using HidProtocol::Report;

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(const Report& report) {
    return {report.begin(), report.end()};
}

/// A powered board and what it sends.
class VirtualBoardTest : public testing::Test {
public:
    VirtualBoardTest() {
        board.powerOn(
            [this](std::span<const std::uint8_t> report) { sent.emplace_back(report.begin(), report.end()); });
    }

    HidEvent lastEvent() {
        HidEvent event;
        std::string error;
        EXPECT_FALSE(sent.empty());
        EXPECT_TRUE(HidProtocol::decodeInputReport(sent.back().data(), sent.back().size(), event, error)) << error;
        return event;
    }

    void tell(const Report& report) { board.receiveOutput(OutputCall::Write, report); }

    VirtualBoard board;
    std::vector<Bytes> sent;
};

} // namespace

TEST_F(VirtualBoardTest, PressHoldAndReleaseAreButtonEvents) {
    board.press(0x1234, 1);
    EXPECT_EQ(lastEvent(), (HidEvent{0, 1, 0x1234, 1, 0, 1, 0}));
    board.hold(0x1234, 1);
    EXPECT_EQ(lastEvent(), (HidEvent{0, 1, 0x1234, 2, 0, 1, 0}));
    board.hold(0x1234, 0, 4);
    EXPECT_EQ(lastEvent(), (HidEvent{0, 1, 0x1234, 4, 0, 0, 0}));
    board.release(0x1234);
    EXPECT_EQ(lastEvent(), (HidEvent{0, 1, 0x1234, 0, 0, 0, 0}));
    EXPECT_EQ(sent.size(), 4U);
}

TEST_F(VirtualBoardTest, TurnIsAnEncoderEvent) {
    board.turn(9, -3, 2, 1);
    EXPECT_EQ(lastEvent(), (HidEvent{0, 2, 9, -3, 2, 1, 0}));
}

TEST_F(VirtualBoardTest, NoticeIsItsOwnType) {
    board.notice();
    EXPECT_EQ(lastEvent(), (HidEvent{0, 4, 0, 0, 0, 0, 0}));
}

TEST_F(VirtualBoardTest, EventFieldsSurviveTheWire) {
    const HidEvent event{0xF1, 0x77, 0xABCD, -128, 0xF2, 0xF3, 0xFEDC};
    board.sendEvent(event);
    EXPECT_EQ(lastEvent(), event);
    EXPECT_EQ(sent.back().size(), 32U);
}

TEST_F(VirtualBoardTest, RawReportIsSentAsItIs) {
    board.sendRaw(Bytes{9, 8, 7});
    EXPECT_EQ(sent, (std::vector<Bytes>{{9, 8, 7}}));
}

TEST_F(VirtualBoardTest, UnpoweredBoardSendsNothing) {
    board.powerOff();
    board.press(1);
    EXPECT_TRUE(sent.empty());
}

TEST_F(VirtualBoardTest, KnowsNothingOfTheHostAtFirst) {
    EXPECT_FALSE(board.led().has_value());
    EXPECT_FALSE(board.simConnected().has_value());
    EXPECT_FALSE(board.inBootsel());
    EXPECT_TRUE(board.outputs().empty());
}

TEST_F(VirtualBoardTest, ShowsTheLightItWasTold) {
    const LedCommand command{3, 1, 4, 500, 200};
    tell(HidProtocol::encodeLedCtl(command));
    EXPECT_EQ(board.led(), command);
    tell(HidProtocol::encodeLedCtl({}));
    EXPECT_EQ(board.led(), LedCommand());
}

TEST_F(VirtualBoardTest, KeepsTheSimStatus) {
    tell(HidProtocol::encodeSimStatus(true));
    EXPECT_EQ(board.simConnected(), true);
    tell(HidProtocol::encodeSimStatus(false));
    EXPECT_EQ(board.simConnected(), false);
}

TEST_F(VirtualBoardTest, ObeysBootselAlone) {
    tell(Report{0x12, 0x01});
    EXPECT_FALSE(board.inBootsel());
    tell(HidProtocol::encodeBootsel());
    EXPECT_TRUE(board.inBootsel());
}

TEST_F(VirtualBoardTest, KeepsEveryReportWithItsWay) {
    tell(HidProtocol::encodeSimStatus(true));
    board.receiveOutput(OutputCall::SetOutputReport, HidProtocol::encodeBootsel());
    board.receiveOutput(OutputCall::Write, Bytes{0x77});
    EXPECT_EQ(board.outputs(),
              (std::vector<BoardOutput>{{OutputCall::Write, bytesOf(HidProtocol::encodeSimStatus(true))},
                                        {OutputCall::SetOutputReport, bytesOf(HidProtocol::encodeBootsel())},
                                        {OutputCall::Write, {0x77}}}));
    board.clearOutputs();
    EXPECT_TRUE(board.outputs().empty());
}

TEST_F(VirtualBoardTest, CutOrUnknownReportChangesNothing) {
    const auto bootsel = bytesOf(HidProtocol::encodeBootsel());
    board.receiveOutput(OutputCall::Write, {bootsel.data(), 31});
    board.receiveOutput(OutputCall::Write, {});
    tell(Report{0x13, 0x02});
    EXPECT_FALSE(board.inBootsel());
    EXPECT_FALSE(board.led().has_value());
    EXPECT_EQ(board.outputs().size(), 3U);
}

TEST_F(VirtualBoardTest, PowerForgetsTheHostButKeepsTheRecord) {
    tell(HidProtocol::encodeLedCtl({1, 1, 0, 0, 0}));
    tell(HidProtocol::encodeSimStatus(true));
    tell(HidProtocol::encodeBootsel());
    board.powerOff();
    EXPECT_TRUE(board.led().has_value());
    board.powerOn(nullptr);
    EXPECT_FALSE(board.led().has_value());
    EXPECT_FALSE(board.simConnected().has_value());
    EXPECT_FALSE(board.inBootsel());
    EXPECT_EQ(board.outputs().size(), 3U);
}

TEST_F(VirtualBoardTest, CallbackSeesTheStateThatItsReportMade) {
    std::vector<std::optional<bool>> seen;
    board.setOutputCallback([&](const BoardOutput& output) {
        EXPECT_EQ(output.bytes.size(), 32U);
        seen.push_back(board.simConnected());
    });
    tell(HidProtocol::encodeSimStatus(true));
    tell(HidProtocol::encodeSimStatus(false));
    board.setOutputCallback(nullptr);
    tell(HidProtocol::encodeSimStatus(true));
    EXPECT_EQ(seen, (std::vector<std::optional<bool>>{true, false}));
}

TEST(VirtualBoardFeatures, DeviceInfoCarriesTheModel) {
    VirtualBoardModel model;
    model.infoBytes = {1, 2, 3, 4, 5, 6};
    model.infoWord0 = 0x1122;
    model.infoWord1 = 0x3344;
    model.boardId = HidProtocol::BoardId{9, 8, 7, 6, 5, 4, 3, 2};
    HidProtocol::DeviceInfo info;
    std::string error;
    ASSERT_TRUE(HidProtocol::decodeDeviceInfo(VirtualBoard(model).featureReply(0x20).value(), info, error));
    EXPECT_EQ(info.infoBytes, model.infoBytes);
    EXPECT_EQ(info.infoWord0, model.infoWord0);
    EXPECT_EQ(info.infoWord1, model.infoWord1);
    EXPECT_EQ(info.boardId, *model.boardId);
}

TEST(VirtualBoardFeatures, ProtocolInfoCarriesTheModel) {
    VirtualBoardModel model;
    model.protocolInfo = HidProtocol::ProtocolInfo{3, 2, 1};
    EXPECT_EQ(VirtualBoard(model).featureReply(0x21), (Report{0x21, 3, 2, 1}));
}

TEST(VirtualBoardFeatures, BoardWithoutThemDoesNotAnswer) {
    VirtualBoardModel model;
    model.boardId.reset();
    const VirtualBoard board(model);
    EXPECT_FALSE(board.featureReply(0x20).has_value());
    EXPECT_FALSE(board.featureReply(0x21).has_value());
    EXPECT_FALSE(board.featureReply(0x22).has_value());
}
