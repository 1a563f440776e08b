#include "companion/devices/board_list.h"

#include "simulation/boards/virtual_hid_bus.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace {

class BoardList : public testing::Test {
protected:
    BoardList() {
        config.hid.vid = "1234";
        config.hid.pid = "abcd";
        config.outputs.devices = {{"0000000000000001", -1, "PFD", ""}};
    }

    std::shared_ptr<VirtualBoard> plug(const VirtualBoardModel& model, const HidLinkFaults& faults = {}) {
        const auto board = std::make_shared<VirtualBoard>(model);
        bus.setFaults(board, faults);
        path = bus.plug(board);
        return board;
    }

    ListedBoard only(bool configured = true) {
        const std::vector<ListedBoard> boards = listBoards(bus.transport(), configured ? &config : nullptr);
        EXPECT_EQ(boards.size(), 1U);
        return boards.empty() ? ListedBoard() : boards.front();
    }

    bool wasAskedForFeatures() const {
        return std::ranges::any_of(bus.calls(),
                                   [](const HidCallRecord& call) { return call.call == HidCall::GetFeature; });
    }

    VirtualHidBus bus;
    AppConfig config;
    std::string path;
};

const std::vector<HidOpenKind> noWriting{{HidAccess::ReadWrite, HidMode::Synchronous}};
const std::vector<HidOpenKind> noOpening{{HidAccess::ReadWrite, HidMode::Synchronous},
                                         {HidAccess::ReadOnly, HidMode::Synchronous}};

} // namespace

TEST_F(BoardList, HasIdentityProtocolAndRoleOfAConfiguredBoard) {
    VirtualBoardModel model;
    model.serial = "S1";
    model.protocolInfo = HidProtocol::ProtocolInfo{1, 2, 0};
    plug(model);
    const ListedBoard board = only();
    EXPECT_TRUE(board.opens && board.writable && board.matches);
    EXPECT_EQ(board.boardId, "0000000000000001");
    EXPECT_EQ(board.serial, "S1");
    EXPECT_EQ(board.protocol, model.protocolInfo);
    EXPECT_EQ(board.role, "PFD");
    EXPECT_EQ(boardsText({board}), "1234:ABCD  board 0000000000000001\n  number 0\n  protocol version 1.2\n  role PFD\n"
                                   "  serial number S1\n  " +
                                       path + "\n\n");
    EXPECT_EQ(bus.openHandleCount(), 0U);
}

TEST_F(BoardList, AsksOtherDevicesForNothingButTheirIdsAndSerial) {
    VirtualBoardModel model;
    model.productId = 1;
    model.serial = "S2";
    plug(model);
    EXPECT_EQ(boardsText({only()}), "1234:0001  not of this configuration\n  serial number S2\n  " + path + "\n\n");
    EXPECT_FALSE(only(false).matches);
    EXPECT_FALSE(wasAskedForFeatures());
}

TEST_F(BoardList, NamesABoardWithoutAnIdentityByItsSerialOrPath) {
    VirtualBoardModel model;
    model.boardId.reset();
    plug(model);
    EXPECT_EQ(boardName(only()), path);
    EXPECT_EQ(boardsText({only()}), "1234:ABCD  doesn't report an identity; its name is " + path +
                                        "\n  number 0\n  no entry in \"devices\" by this name\n  " + path + "\n\n");
}

TEST_F(BoardList, SaysWhatCannotBeDone) {
    const auto board = plug({}, {.refusedOpens = noWriting});
    EXPECT_FALSE(only().writable);
    EXPECT_NE(boardsText({only()}).find("can't be written to"), std::string::npos);
    bus.setFaults(board, {.refusedOpens = noOpening});
    EXPECT_FALSE(only().opens);
    EXPECT_EQ(boardsText({only()}),
              "????:????  can't be opened: no permission, or another program has it to itself\n  " + path + "\n\n");
}

TEST_F(BoardList, IsJsonWithTheMembersThatAreKnown) {
    plug({});
    EXPECT_EQ(boardsJson({only()}),
              "[\n  {\n    \"path\": \"" + path +
                  "\",\n    \"opens\": true,\n    \"writable\": true,\n"
                  "    \"vendorId\": \"1234\",\n    \"productId\": \"ABCD\",\n    \"serial\": \"\",\n"
                  "    \"matches\": true,\n    \"boardId\": \"0000000000000001\",\n"
                  "    \"protocolVersion\": \"\",\n    \"role\": \"PFD\"\n  }\n]\n");
    EXPECT_EQ(boardsJson({}), "[]\n");
}
