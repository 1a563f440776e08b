#include "mapping/hid_event_queue.h"

#include "tests/unit/mapping/mapping_settings.h"

#include <vector>

namespace {

using HidProtocol::HidEvent;
using std::string;

struct Submitted {
    HidEvent event;
    string deviceName = "B";
    int index = 0;
};

/// What is left in the queue, oldest first: "type:value of control on board".
std::vector<string> left(const std::vector<Submitted>& events) {
    HidEventQueue queue;
    for (const auto& [event, deviceName, index] : events) {
        queue.push({event, deviceName, static_cast<std::uint32_t>(index)});
    }
    std::vector<string> texts;
    while (!queue.empty()) {
        const QueuedHidEvent entry = queue.pop();
        texts.push_back(std::to_string(entry.event.type) + ":" + std::to_string(entry.event.value) + " of " +
                        std::to_string(entry.event.controlId) + " on " + entry.deviceName +
                        std::to_string(entry.index));
    }
    return texts;
}

TEST(HidEventQueue, KeepsTheOrder) {
    EXPECT_EQ(left({{encoder(9, 1)}, {button(3, 1), "A", 7}, {encoder(9, -1)}}),
              (std::vector<string>{"2:1 of 9 on B0", "1:1 of 3 on A7", "2:-1 of 9 on B0"}));
}

TEST(HidEventQueue, ReleaseRemovesTheQueuedHoldsOfItsButtonWhateverTheirModeAndSpeed) {
    const HidEvent odd{.headerByte = 9, .type = 1, .controlId = 7, .value = 2, .speed = 3, .mode = 1, .trailerWord = 4};
    EXPECT_EQ(left({{button(7, 1)}, {button(7, 2)}, {button(7, 3)}, {button(7, 4)}, {odd}, {button(7, 0)}}),
              (std::vector<string>{"1:1 of 7 on B0", "1:0 of 7 on B0"}));
}

TEST(HidEventQueue, EverythingElseStays) {
    // Holds of other buttons and boards.
    EXPECT_EQ(
        left({{button(8, 2)}, {button(7, 2), "B", 1}, {button(7, 2), "b"}, {button(7, 2), ""}, {button(7, 0)}}),
        (std::vector<string>{"1:2 of 8 on B0", "1:2 of 7 on B1", "1:2 of 7 on b0", "1:2 of 7 on 0", "1:0 of 7 on B0"}));
    // Earlier releases, values outside the hold class, turns of the same number, later holds.
    EXPECT_EQ(left({{button(7, 0)}, {button(7, 5)}, {encoder(7, 2)}, {button(7, 0)}, {button(7, 2)}}),
              (std::vector<string>{"1:0 of 7 on B0", "1:5 of 7 on B0", "2:2 of 7 on B0", "1:0 of 7 on B0",
                                   "1:2 of 7 on B0"}));
}

TEST(HidEventQueue, OnlyAButtonsReleaseRemovesHolds) {
    for (const HidEvent& last : {button(7, 1), encoder(7, 0), notice(), HidEvent{.type = 3, .controlId = 7}}) {
        EXPECT_EQ(left({{button(7, 2)}, {last}}).size(), 2U) << int{last.type};
    }
}

} // namespace
