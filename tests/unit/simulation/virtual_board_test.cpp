#include "simulation/boards/virtual_board.h"

#include <gtest/gtest.h>

#include <functional>

using HidProtocol::HidEvent;
using HidProtocol::Report;

namespace {

using Bytes = std::vector<std::uint8_t>;

/// A powered board and what it sends.
class VirtualBoardTest : public testing::Test {
public:
    VirtualBoardTest() {
        board.powerOn(
            [this](std::span<const std::uint8_t> report) { sent.emplace_back(report.begin(), report.end()); });
    }

    void receive(const Report& report) { board.receiveOutput(OutputCall::Write, report); }

    VirtualBoard board;
    std::vector<Bytes> sent;
};

} // namespace

TEST_F(VirtualBoardTest, EachInputIsAnEvent) {
    struct Case {
        std::function<void(VirtualBoard&)> input;
        HidEvent event;
    };
    const HidEvent everyField{0xF1, 0x77, 0xABCD, -128, 0xF2, 0xF3, 0xFEDC};
    const Case cases[] = {
        {[](VirtualBoard& sender) { sender.press(0x1234, 1); }, {0, 1, 0x1234, 1, 0, 1, 0}},
        {[](VirtualBoard& sender) { sender.hold(0x1234, 1); }, {0, 1, 0x1234, 2, 0, 1, 0}},
        {[](VirtualBoard& sender) { sender.hold(0x1234, 0, 4); }, {0, 1, 0x1234, 4, 0, 0, 0}},
        {[](VirtualBoard& sender) { sender.release(0x1234); }, {0, 1, 0x1234, 0, 0, 0, 0}},
        {[](VirtualBoard& sender) { sender.turn(9, -3, 2, 1); }, {0, 2, 9, -3, 2, 1, 0}},
        {[](VirtualBoard& sender) { sender.notice(); }, {0, 4, 0, 0, 0, 0, 0}},
        {[&](VirtualBoard& sender) { sender.sendEvent(everyField); }, everyField},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(&one - cases);
        one.input(board);
        HidEvent event;
        std::string error;
        EXPECT_EQ(sent.back().size(), 32U);
        EXPECT_TRUE(HidProtocol::decodeInputReport(sent.back().data(), 32, event, error)) << error;
        EXPECT_EQ(event, one.event);
    }
    EXPECT_EQ(sent.size(), std::size(cases));
}

TEST_F(VirtualBoardTest, SendsNothingWithoutPower) {
    board.powerOff();
    board.press(1);
    EXPECT_TRUE(sent.empty());
}

TEST_F(VirtualBoardTest, CutOrUnknownReportChangesNothing) {
    const Report bootsel = HidProtocol::encodeBootsel();
    board.receiveOutput(OutputCall::Write, {bootsel.data(), 31});
    board.receiveOutput(OutputCall::Write, {});
    receive(Report{0x12, 0x01});
    receive(Report{0x13, 0x02});
    EXPECT_FALSE(board.inBootsel());
    EXPECT_FALSE(board.led().has_value());
    EXPECT_FALSE(board.simConnected().has_value());
    EXPECT_EQ(board.outputs().size(), 4U);
}

TEST_F(VirtualBoardTest, PowerCycleForgetsTheHostButKeepsTheRecord) {
    receive(HidProtocol::encodeLedCtl({3, 1, 4, 500, 200}));
    receive(HidProtocol::encodeSimStatus(true));
    receive(HidProtocol::encodeBootsel());
    EXPECT_TRUE(board.inBootsel());
    board.powerOff();
    EXPECT_EQ(board.led(), (LedCommand{3, 1, 4, 500, 200}));
    board.powerOn(nullptr);
    EXPECT_FALSE(board.led().has_value());
    EXPECT_FALSE(board.simConnected().has_value());
    EXPECT_FALSE(board.inBootsel());
    EXPECT_EQ(board.outputs().size(), 3U);
}

TEST(VirtualBoardFeatures, CarryTheModel) {
    VirtualBoardModel model;
    model.infoBytes = {1, 2, 3, 4, 5, 6};
    model.infoWord0 = 0x1122;
    model.infoWord1 = 0x3344;
    model.boardId = HidProtocol::BoardId{9, 8, 7, 6, 5, 4, 3, 2};
    model.protocolInfo = HidProtocol::ProtocolInfo{3, 2, 1};
    const VirtualBoard board(model);
    HidProtocol::DeviceInfo info;
    std::string error;
    ASSERT_TRUE(HidProtocol::decodeDeviceInfo(board.featureReply(0x20).value(), info, error));
    EXPECT_EQ(info.infoBytes, model.infoBytes);
    EXPECT_EQ(info.infoWord0, model.infoWord0);
    EXPECT_EQ(info.infoWord1, model.infoWord1);
    EXPECT_EQ(info.boardId, *model.boardId);
    EXPECT_EQ(board.featureReply(0x21), (Report{0x21, 3, 2, 1}));
}
