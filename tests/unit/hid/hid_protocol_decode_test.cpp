#include "hid/hid_protocol.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

using HidProtocol::HidEvent;
using HidProtocol::Report;

namespace {

/// Every payload byte differs from its neighbours.
Report sampleReport() {
    Report report{};
    for (std::size_t i = 0; i < report.size(); ++i) {
        report[i] = static_cast<std::uint8_t>(0xA0 + i);
    }
    report[0] = 0x01;
    return report;
}

HidEvent sampleEvent() {
    return {0xA1, 0xA2, 0xA5A4, static_cast<std::int8_t>(0xA6), 0xA7, 0xA8, 0xAAA9};
}

bool decode(const std::vector<std::uint8_t>& bytes, HidEvent& event, std::string& error) {
    return HidProtocol::decodeInputReport(bytes.data(), bytes.size(), event, error);
}

std::vector<std::uint8_t> bytesOf(const Report& report) {
    return {report.begin(), report.end()};
}

} // namespace

TEST(InputReport, FreshEventIsAllZero) {
    EXPECT_EQ(HidEvent(), (HidEvent{0, 0, 0, 0, 0, 0, 0}));
}

TEST(InputReport, TakesEachFieldFromItsPlace) {
    HidEvent event;
    std::string error;
    ASSERT_TRUE(decode(bytesOf(sampleReport()), event, error));
    EXPECT_EQ(event, sampleEvent());
    EXPECT_EQ(error, "");
}

TEST(InputReport, ReadOf31BytesGivesTheSameEvent) {
    const auto report = sampleReport();
    HidEvent event;
    std::string error;
    ASSERT_TRUE(decode({report.begin() + 1, report.end()}, event, error));
    EXPECT_EQ(event, sampleEvent());
}

TEST(InputReport, FirstByteOf31IsNotChecked) {
    for (const int first : {0x00, 0x01, 0x02, 0xFF}) {
        std::vector<std::uint8_t> bytes(31);
        bytes[0] = static_cast<std::uint8_t>(first);
        bytes[1] = 1;
        HidEvent event;
        std::string error;
        ASSERT_TRUE(decode(bytes, event, error));
        EXPECT_EQ(event.headerByte, first);
        EXPECT_EQ(event.type, 1);
    }
}

TEST(InputReport, RefusesAnotherReportId) {
    auto report = sampleReport();
    report[0] = 0x02;
    HidEvent event = sampleEvent();
    std::string error;
    EXPECT_FALSE(decode(bytesOf(report), event, error));
    EXPECT_EQ(error, "Unexpected report ID");
    EXPECT_EQ(event, sampleEvent());
}

TEST(InputReport, RefusesReportIdZero) {
    HidEvent event;
    std::string error;
    EXPECT_FALSE(decode(std::vector<std::uint8_t>(32), event, error));
    EXPECT_EQ(error, "Unexpected report ID");
}

TEST(InputReport, Refuses30BytesEvenWithTheRightId) {
    std::vector<std::uint8_t> bytes(30);
    bytes[0] = 0x01;
    HidEvent event = sampleEvent();
    std::string error;
    EXPECT_FALSE(decode(bytes, event, error));
    EXPECT_EQ(error, "Invalid report length");
    EXPECT_EQ(event, sampleEvent());
}

TEST(InputReport, RefusesEveryShorterLength) {
    for (std::size_t length = 1; length < 31; ++length) {
        std::vector<std::uint8_t> bytes(length, 0x01);
        HidEvent event;
        std::string error;
        EXPECT_FALSE(decode(bytes, event, error)) << length;
        EXPECT_EQ(error, "Invalid report length") << length;
    }
}

TEST(InputReport, LongerReadIsTakenAs32Bytes) {
    auto bytes = bytesOf(sampleReport());
    bytes.push_back(0xFF);
    bytes.resize(64);
    HidEvent event;
    std::string error;
    ASSERT_TRUE(decode(bytes, event, error));
    EXPECT_EQ(event, sampleEvent());
}

TEST(InputReport, LongerReadNeedsTheReportIdToo) {
    HidEvent event;
    std::string error;
    EXPECT_FALSE(decode(std::vector<std::uint8_t>(33, 0x07), event, error));
    EXPECT_EQ(error, "Unexpected report ID");
}

TEST(InputReport, PayloadByteTwoHasNoEffect) {
    auto one = sampleReport();
    auto other = one;
    one[3] = 0x00;
    other[3] = 0xFF;
    HidEvent oneEvent;
    HidEvent otherEvent;
    std::string error;
    ASSERT_TRUE(decode(bytesOf(one), oneEvent, error));
    ASSERT_TRUE(decode(bytesOf(other), otherEvent, error));
    EXPECT_EQ(oneEvent, otherEvent);
}

TEST(InputReport, BytesBehindThePayloadHaveNoEffect) {
    auto report = sampleReport();
    std::fill(report.begin() + 11, report.end(), std::uint8_t{0xFF});
    HidEvent event;
    std::string error;
    ASSERT_TRUE(decode(bytesOf(report), event, error));
    EXPECT_EQ(event, sampleEvent());
}

TEST(InputReport, ControlIdIsLittleEndian) {
    auto report = sampleReport();
    report[4] = 0x34;
    report[5] = 0x12;
    HidEvent event;
    std::string error;
    ASSERT_TRUE(decode(bytesOf(report), event, error));
    EXPECT_EQ(event.controlId, 0x1234);
}

TEST(InputReport, TrailerWordIsLittleEndianUpToItsMaximum) {
    auto report = sampleReport();
    report[9] = 0xFE;
    report[10] = 0xFF;
    HidEvent event;
    std::string error;
    ASSERT_TRUE(decode(bytesOf(report), event, error));
    EXPECT_EQ(event.trailerWord, 0xFFFE);
}

TEST(InputReport, ValueIsASignedByte) {
    auto report = sampleReport();
    HidEvent event;
    std::string error;
    report[6] = 0x80;
    ASSERT_TRUE(decode(bytesOf(report), event, error));
    EXPECT_EQ(event.value, -128);
    report[6] = 0x7F;
    ASSERT_TRUE(decode(bytesOf(report), event, error));
    EXPECT_EQ(event.value, 127);
}

TEST(DeviceInfo, TakesEachFieldFromItsPlace) {
    auto report = sampleReport();
    report[0] = 0x20;
    HidProtocol::DeviceInfo info;
    std::string error;
    ASSERT_TRUE(HidProtocol::decodeDeviceInfo(report, info, error));
    EXPECT_EQ(info.infoBytes, (std::array<std::uint8_t, 6>{0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6}));
    EXPECT_EQ(info.infoWord0, 0xA8A7);
    EXPECT_EQ(info.infoWord1, 0xAAA9);
    EXPECT_EQ(info.boardId, (HidProtocol::BoardId{0xAB, 0xAC, 0xAD, 0xAE, 0xAF, 0xB0, 0xB1, 0xB2}));
    EXPECT_EQ(error, "");
}

TEST(DeviceInfo, RefusesAnotherIdAndLeavesTheRecord) {
    auto report = sampleReport();
    report[0] = 0x21;
    HidProtocol::DeviceInfo info;
    info.infoWord0 = 7;
    std::string error;
    EXPECT_FALSE(HidProtocol::decodeDeviceInfo(report, info, error));
    EXPECT_EQ(error, "Unexpected report ID");
    EXPECT_EQ(info.infoWord0, 7);
    EXPECT_EQ(info.boardId, HidProtocol::BoardId{});
}

TEST(ProtocolInfo, TakesEachFieldFromItsPlace) {
    auto report = sampleReport();
    report[0] = 0x21;
    HidProtocol::ProtocolInfo info;
    std::string error;
    ASSERT_TRUE(HidProtocol::decodeProtocolInfo(report, info, error));
    EXPECT_EQ(info.protocolMajor, 0xA1);
    EXPECT_EQ(info.protocolMinor, 0xA2);
    EXPECT_EQ(info.protocolFlags, 0xA3);
}

TEST(ProtocolInfo, RefusesAnotherIdAndLeavesTheRecord) {
    HidProtocol::ProtocolInfo info{1, 2, 3};
    std::string error;
    EXPECT_FALSE(HidProtocol::decodeProtocolInfo(Report{0x20, 9, 9, 9}, info, error));
    EXPECT_EQ(error, "Unexpected report ID");
    EXPECT_EQ(info.protocolMajor, 1);
    EXPECT_EQ(info.protocolMinor, 2);
    EXPECT_EQ(info.protocolFlags, 3);
}

TEST(BoardIdText, GivesWireOrderUpperCaseZeroFilled) {
    HidProtocol::DeviceInfo info;
    info.boardId = {0x01, 0xAB, 0x00, 0xFF, 0x10, 0x20, 0x30, 0x0C};
    EXPECT_EQ(HidProtocol::boardIdText(info), "01AB00FF1020300C");
}

TEST(BoardIdText, IsSixteenCharactersEvenForZero) {
    EXPECT_EQ(HidProtocol::boardIdText(HidProtocol::DeviceInfo()), "0000000000000000");
}
