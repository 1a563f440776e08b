#include "hid/hid_protocol.h"

#include "hid/hex_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

using HidProtocol::HidEvent;
using HidProtocol::HidEventAction;
using HidProtocol::Report;

namespace {

using Bytes = std::vector<std::uint8_t>;

/// Every byte behind the id differs from its neighbours.
Report sampleReport(std::uint8_t reportId) {
    Report report{};
    for (std::size_t i = 0; i < report.size(); ++i) {
        report[i] = static_cast<std::uint8_t>(0xA0 + i);
    }
    report[0] = reportId;
    return report;
}

Bytes sampleInput() {
    const Report report = sampleReport(0x01);
    return {report.begin(), report.end()};
}

/// Words are little-endian, and the value is signed.
const HidEvent sampleEvent{0xA1, 0xA2, 0xA5A4, static_cast<std::int8_t>(0xA6), 0xA7, 0xA8, 0xAAA9};

/// The event of an input report, which must decode.
HidEvent decoded(const Bytes& bytes) {
    HidEvent event;
    std::string error;
    EXPECT_TRUE(HidProtocol::decodeInputReport(bytes.data(), bytes.size(), event, error)) << hexText(bytes);
    EXPECT_EQ(error, "");
    return event;
}

/// The error of an input report, which must leave the event alone.
std::string refusal(const Bytes& bytes) {
    HidEvent event = sampleEvent;
    std::string error;
    EXPECT_FALSE(HidProtocol::decodeInputReport(bytes.data(), bytes.size(), event, error)) << hexText(bytes);
    EXPECT_EQ(event, sampleEvent);
    return error;
}

} // namespace

TEST(InputReport, TakesEachFieldFromItsPlaceAndReadsNoOtherByte) {
    const Bytes whole = sampleInput();
    const Bytes withoutId(whole.begin() + 1, whole.end());
    Bytes longer = whole;
    longer.resize(64, 0xFF);
    Bytes otherUnread = whole;
    otherUnread[3] = 0;
    std::fill(otherUnread.begin() + 11, otherUnread.end(), std::uint8_t{0xFF});
    for (const Bytes& bytes : {whole, withoutId, longer, otherUnread}) {
        EXPECT_EQ(decoded(bytes), sampleEvent) << hexText(bytes);
    }
}

TEST(InputReport, FirstByteOf31IsNotChecked) {
    for (const std::uint8_t first : Bytes{0x00, 0x01, 0x02, 0xFF}) {
        Bytes bytes(31);
        bytes[0] = first;
        EXPECT_EQ(decoded(bytes), HidEvent{.headerByte = first});
    }
}

TEST(InputReport, RefusesEveryOtherLengthAndIdAndLeavesTheEvent) {
    for (std::size_t length = 1; length < 31; ++length) {
        EXPECT_EQ(refusal(Bytes(length, 0x01)), "Invalid report length") << length;
    }
    for (const std::uint8_t reportId : Bytes{0x00, 0x02, 0xFF}) {
        EXPECT_EQ(refusal(Bytes(32, reportId)), "Unexpected report ID");
        EXPECT_EQ(refusal(Bytes(33, reportId)), "Unexpected report ID");
    }
}

TEST(DeviceInfo, TakesEachFieldFromItsPlaceAndLeavesTheRecordForAnotherId) {
    HidProtocol::DeviceInfo info;
    std::string error;
    ASSERT_TRUE(HidProtocol::decodeDeviceInfo(sampleReport(0x20), info, error));
    EXPECT_EQ(info.infoBytes, (std::array<std::uint8_t, 6>{0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6}));
    EXPECT_EQ(info.infoWord0, 0xA8A7);
    EXPECT_EQ(info.infoWord1, 0xAAA9);
    EXPECT_EQ(info.boardId, (HidProtocol::BoardId{0xAB, 0xAC, 0xAD, 0xAE, 0xAF, 0xB0, 0xB1, 0xB2}));
    EXPECT_EQ(error, "");
    EXPECT_FALSE(HidProtocol::decodeDeviceInfo(Report{0x21}, info, error));
    EXPECT_EQ(error, "Unexpected report ID");
    EXPECT_EQ(info.infoWord0, 0xA8A7);
    EXPECT_EQ(HidProtocol::boardIdText(info), "ABACADAEAFB0B1B2");
}

TEST(ProtocolInfo, TakesEachFieldFromItsPlaceAndLeavesTheRecordForAnotherId) {
    const HidProtocol::ProtocolInfo expected{0xA1, 0xA2, 0xA3};
    HidProtocol::ProtocolInfo info;
    std::string error;
    ASSERT_TRUE(HidProtocol::decodeProtocolInfo(sampleReport(0x21), info, error));
    EXPECT_EQ(info, expected);
    EXPECT_FALSE(HidProtocol::decodeProtocolInfo(Report{0x20, 9, 9, 9}, info, error));
    EXPECT_EQ(error, "Unexpected report ID");
    EXPECT_EQ(info, expected);
}

TEST(BoardIdText, GivesWireOrderUpperCaseZeroFilled) {
    HidProtocol::DeviceInfo info;
    EXPECT_EQ(HidProtocol::boardIdText(info), "0000000000000000");
    info.boardId = {0x01, 0xAB, 0x00, 0xFF, 0x10, 0x20, 0x30, 0x0C};
    EXPECT_EQ(HidProtocol::boardIdText(info), "01AB00FF1020300C");
    EXPECT_EQ(hexText({}), "");
}

TEST(Classify, GoesByTypeAndValue) {
    struct Row {
        int firstType, lastType, firstValue, lastValue;
        HidEventAction action;
    };
    for (const auto& row : {Row{0, 0, 0, 255, HidEventAction::None}, Row{1, 1, 0, 0, HidEventAction::ButtonRelease},
                            Row{1, 1, 1, 1, HidEventAction::ButtonPress}, Row{1, 1, 2, 4, HidEventAction::Hold},
                            Row{1, 1, 5, 255, HidEventAction::None}, Row{2, 2, 0, 0, HidEventAction::None},
                            Row{2, 2, 1, 127, HidEventAction::EncCw}, Row{2, 2, 128, 255, HidEventAction::EncCcw},
                            Row{3, 255, 0, 255, HidEventAction::None}}) {
        for (int type = row.firstType; type <= row.lastType; ++type) {
            for (int value = row.firstValue; value <= row.lastValue; ++value) {
                HidEvent event{
                    0xFF, static_cast<std::uint8_t>(type), 0xFFFF, static_cast<std::int8_t>(value), 0xFF, 0xFF, 0xFFFF};
                ASSERT_EQ(HidProtocol::classify(event), row.action) << type << " " << value;
            }
        }
    }
}

TEST(ActionName, IsFixedForEachNumber) {
    int number = -1;
    for (const char* name : {"NONE", "NONE", "BUTTON_PRESS", "BUTTON_RELEASE", "HOLD", "ENC_CW", "ENC_CCW", "NONE"}) {
        EXPECT_STREQ(HidProtocol::actionName(static_cast<HidEventAction>(number)), name) << number;
        ++number;
    }
}

TEST(Encoders, FillTheirFieldsAndLeaveTheRestZero) {
    const std::vector<std::pair<Report, Report>> reports{
        {HidProtocol::encodeLedCtl({3, 0, 4, 500, 200}), {0x10, 0x03, 0x00, 0x04, 0xF4, 0x01, 0xC8}},
        {HidProtocol::encodeLedCtl({1, 0x7F, 0, 0, 0}), {0x10, 0x01, 0x7F}},
        {HidProtocol::encodeLedCtl({}), {0x10}},
        {HidProtocol::encodeLedCtl({255, 255, 255, 65535, 255}), {0x10, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        {HidProtocol::encodeSimStatus(true), {0x11, 0x01}},
        {HidProtocol::encodeSimStatus(false), {0x11, 0x00}},
        {HidProtocol::encodeBootsel(), {0x12, 0x02}}};
    for (const auto& [report, expected] : reports) {
        EXPECT_EQ(report, expected) << hexText(expected);
    }
}
