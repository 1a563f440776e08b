#include "companion/trial/board_light.h"

#include "mapping/output_state.h"
#include "simulation/boards/virtual_hid_bus.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

ListedBoard listed(const std::string& id, const std::string& serial, bool matches = true) {
    ListedBoard board;
    board.boardId = id;
    board.serial = serial;
    board.matches = matches;
    return board;
}

} // namespace

TEST(BoardLight, BoardIsFoundByIdentityNameSerialAndNumber) {
    const std::vector<ListedBoard> boards{listed("", "S0", false), listed("00000000000000AB", "S1"),
                                          listed("00000000000000AC", "0"), listed("", "S3")};
    struct Row {
        const char* text;
        int place;
    };
    // The serial number 0 comes before the place 0.
    for (const Row& row : {Row{"0x00000000000000ab", 1}, Row{"S1", 1}, Row{"S3", 3}, Row{"0", 2}, Row{"1", 2},
                           Row{"2", 3}, Row{"3", -1}, Row{"S0", -1}, Row{"", -1}, Row{"99999999999999999999", -1}}) {
        const ListedBoard* const expected = row.place < 0 ? nullptr : &boards.at(static_cast<std::size_t>(row.place));
        EXPECT_EQ(findBoard(boards, row.text), expected) << row.text;
    }
}

TEST(BoardLight, EffectsAreThoseOfTheDefaultProfileWithAnotherLevel) {
    struct Row {
        const char* name;
        std::optional<std::int32_t> percent;
        LedCommand command;
    };
    for (const Row& row :
         {Row{"steady", 30, {.effect = 1, .brightness = 30}},
          Row{"Steady", std::nullopt, {.effect = 1, .brightness = 80}},
          Row{"breathe", std::nullopt, {.effect = 2, .count = 5, .periodMs = 1000, .level = 50}},
          Row{"flash", 20, {.effect = 3, .count = 4, .periodMs = 150, .level = 20}}, Row{"off", std::nullopt, {}}}) {
        const auto effect = effectNamed(row.name, row.percent);
        ASSERT_TRUE(effect) << row.name;
        EXPECT_EQ(effectCommand(*effect), row.command) << row.name;
    }
    EXPECT_FALSE(effectNamed("blink", std::nullopt));
}

TEST(BoardLight, IsWrittenToTheBoardOrSaysWhyNot) {
    VirtualHidBus bus;
    const auto board = std::make_shared<VirtualBoard>();
    ListedBoard target;
    target.path = bus.plug(board);
    std::string error;
    EXPECT_TRUE(showLight(bus.transport(), target, {.effect = 1, .brightness = 7}, error));
    EXPECT_EQ(board->led(), (LedCommand{.effect = 1, .brightness = 7}));
    bus.setFaults(board, {.writeError = 31});
    EXPECT_FALSE(showLight(bus.transport(), target, {}, error));
    EXPECT_EQ(error, "the board doesn't take the report (system error 31)");
    bus.unplug(board);
    EXPECT_FALSE(showLight(bus.transport(), target, {}, error));
    EXPECT_TRUE(error.starts_with("the board can't be opened")) << error;
}
