#include "simulation/cockpit/report_text.h"

#include "hid/hid_protocol.h"

#include <gtest/gtest.h>

namespace {

std::string textOf(std::uint8_t type, std::uint16_t control, std::int8_t value, std::uint8_t speed = 0,
                   std::uint8_t mode = 0) {
    HidEventMap map;
    map.controlIds[21] = "HDG";
    HidProtocol::Report report{};
    report[0] = HidProtocol::inputEventReportId;
    report[2] = type;
    report[4] = static_cast<std::uint8_t>(control & 0xFF);
    report[5] = static_cast<std::uint8_t>(control >> 8);
    report[6] = static_cast<std::uint8_t>(value);
    report[7] = speed;
    report[8] = mode;
    return inputReportText(report, map);
}

} // namespace

TEST(InputReportText, WordsWhatAHandDoes) {
    EXPECT_EQ(textOf(1, 21, 1), "press HDG");
    EXPECT_EQ(textOf(1, 21, 0), "release HDG");
    EXPECT_EQ(textOf(1, 21, 3), "hold HDG");
    EXPECT_EQ(textOf(2, 21, 2), "turn HDG +2");
    EXPECT_EQ(textOf(2, 21, -128, 4, 1), "turn HDG -128 speed=4 mode=1");
}

TEST(InputReportText, NumbersAControlWithoutAName) {
    EXPECT_EQ(textOf(1, 300, 1), "press 300");
}

TEST(InputReportText, WordsWhatMeansNothing) {
    EXPECT_EQ(textOf(4, 0, 0), "notice");
    EXPECT_EQ(textOf(1, 21, 5), "event 1 HDG value=5");
    EXPECT_EQ(textOf(9, 21, 1, 0, 7), "event 9 HDG value=1 mode=7");
}

TEST(InputReportText, ShowsTheBytesOfAReportThatIsDropped) {
    const HidEventMap map;
    const std::vector<std::uint8_t> shortReport{0x01, 0xAB};
    EXPECT_EQ(inputReportText(shortReport, map), "raw 01AB");
    EXPECT_EQ(inputReportText({}, map), "raw ");
}
