#include "companion/recording/report_words.h"

#include "hid/hid_protocol.h"

#include <gtest/gtest.h>

namespace {

std::string wordsOf(std::span<const std::uint8_t> report) {
    return reportWords(report, [](std::uint16_t number) { return number == 21 ? "HDG" : std::to_string(number); });
}

} // namespace

TEST(ReportWords, DescribesEachReport) {
    struct Case {
        std::vector<std::uint8_t> fields;
        const char* text;
    };
    // Type, a byte, the control's two, value, speed and mode.
    const Case cases[] = {
        {{1, 0, 21, 0, 1, 0, 0}, "press HDG"},
        {{1, 0, 21, 0, 0, 0, 0}, "release HDG"},
        {{1, 0, 21, 0, 3, 0, 0}, "hold HDG value=3"},
        {{2, 0, 21, 0, 2, 0, 0}, "turn HDG +2"},
        {{2, 0, 21, 0, 0x80, 4, 1}, "turn HDG -128 speed=4 mode=1"},
        // Any other number.
        {{1, 0, 44, 1, 1, 0, 0}, "press 300"},
        {{4, 0, 0, 0, 0, 0, 0}, "notice"},
        {{4, 0, 21, 0, 0, 0, 0}, "event 4 HDG"},
        {{1, 0, 21, 0, 5, 0, 0}, "event 1 HDG value=5"},
        {{9, 0, 21, 0, 1, 0, 7}, "event 9 HDG value=1 mode=7"},
    };
    for (const Case& one : cases) {
        HidProtocol::Report report{HidProtocol::inputEventReportId};
        std::ranges::copy(one.fields, report.begin() + 2);
        EXPECT_EQ(wordsOf(report), one.text);
    }
}

TEST(ReportWords, ShowsTheBytesOfAReportThatIsDropped) {
    EXPECT_EQ(wordsOf(std::vector<std::uint8_t>{0x01, 0xAB}), "raw 01AB");
    EXPECT_EQ(wordsOf({}), "raw ");
}
