#include "wire/requests.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace {

using SimConnectWire::Bytes;

// A request's expected bytes, field by field.
class Expected {
public:
    Expected& word(std::uint32_t value) {
        for (unsigned shift = 0; shift < 32; shift += 8) {
            bytes.push_back(static_cast<std::uint8_t>(value >> shift));
        }
        return *this;
    }
    Expected& name(const std::string& text) {
        const std::size_t end = bytes.size() + 256;
        bytes.insert(bytes.end(), text.begin(), text.end());
        bytes.resize(end);
        return *this;
    }
    Bytes bytes;
};

TEST(SimConnectWire, OpenHasNameAndTheVersionsOfItsProtocol) {
    // As captured from clients of each generation.
    const std::vector<std::pair<std::uint8_t, Bytes>> tails{
        {4, {0x00, 0x00, 0x00, 0x00, 0x00, 0x58, 0x53, 0x46, 0x0A, 0x00, 0x00, 0x00,
             0x00, 0x00, 0x00, 0x00, 0x4B, 0xEF, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}},
        {5, {0x00, 0x00, 0x00, 0x00, 0x00, 0x48, 0x4B, 0x00, 0x0B, 0x00, 0x00, 0x00,
             0x00, 0x00, 0x00, 0x00, 0xBB, 0xF4, 0x00, 0x00, 0x03, 0x00, 0x00, 0x00}},
        {6, {0x00, 0x00, 0x00, 0x00, 0x00, 0x52, 0x53, 0x00, 0x0C, 0x00, 0x00, 0x00,
             0x02, 0x00, 0x00, 0x00, 0x3E, 0x4E, 0x04, 0x00, 0xE7, 0x03, 0x00, 0x00}}};
    for (const auto& [protocol, tail] : tails) {
        Bytes out;
        SimConnectWire::appendOpen(out, {1, protocol}, "VantrelBridgeHID");
        const Bytes head{0x28, 0x01, 0x00, 0x00, protocol, 0x00, 0x00, 0x00,
                         0x01, 0x00, 0x00, 0xF0, 0x01,     0x00, 0x00, 0x00};
        ASSERT_EQ(out.size(), 296U);
        EXPECT_EQ(Bytes(out.begin(), out.begin() + 16), head);
        EXPECT_EQ(std::string(out.begin() + 16, out.begin() + 32), "VantrelBridgeHID");
        EXPECT_TRUE(std::all_of(out.begin() + 32, out.begin() + 272, [](std::uint8_t byte) { return byte == 0; }));
        EXPECT_EQ(Bytes(out.begin() + 272, out.end()), tail) << int{protocol};
    }
}

TEST(SimConnectWire, AddToDataDefinition) {
    Bytes out;
    SimConnectWire::appendAddToDataDefinition(out, {2}, 1, "ELECTRICAL MASTER BATTERY:2", "Bool", 1, 0.5F, 0xFFFFFFFF);
    Expected expected;
    expected.word(544).word(4).word(0xF000000C).word(2).word(1).name("ELECTRICAL MASTER BATTERY:2").name("Bool");
    expected.word(1).word(0x3F000000).word(0xFFFFFFFF);
    EXPECT_EQ(out, expected.bytes);
}

TEST(SimConnectWire, RequestDataOnSimObject) {
    Bytes out;
    SimConnectWire::appendRequestDataOnSimObject(out, {3}, 11, 12, 13, 14, 15, 16, 17, 18);
    Expected expected;
    expected.word(48).word(4).word(0xF000000E).word(3);
    expected.word(11).word(12).word(13).word(14).word(15).word(16).word(17).word(18);
    EXPECT_EQ(out, expected.bytes);
}

TEST(SimConnectWire, MapClientEventToSimEvent) {
    Bytes out;
    SimConnectWire::appendMapClientEventToSimEvent(out, {4}, 0x01020304, "TOGGLE_MASTER_BATTERY");
    Expected expected;
    expected.word(276).word(4).word(0xF0000004).word(4).word(0x01020304).name("TOGGLE_MASTER_BATTERY");
    EXPECT_EQ(out, expected.bytes);
}

TEST(SimConnectWire, TransmitClientEvent) {
    Bytes out;
    SimConnectWire::appendTransmitClientEvent(out, {5}, 0, 7, 0, 1, 0x10);
    Expected expected;
    expected.word(36).word(4).word(0xF0000005).word(5).word(0).word(7).word(0).word(1).word(0x10);
    EXPECT_EQ(out, expected.bytes);
}

TEST(SimConnectWire, MapClientDataNameToIdHasTheNameFirst) {
    Bytes out;
    SimConnectWire::appendMapClientDataNameToId(out, {6}, "MobiFlight.Command", 0x1000);
    Expected expected;
    expected.word(276).word(4).word(0xF0000037).word(6).name("MobiFlight.Command").word(0x1000);
    EXPECT_EQ(out, expected.bytes);
}

TEST(SimConnectWire, AddToClientDataDefinition) {
    Bytes out;
    SimConnectWire::appendAddToClientDataDefinition(out, {7}, 0x1100, 4, 256, 0.0F, 0xFFFFFFFF);
    Expected expected;
    expected.word(36).word(4).word(0xF0000039).word(7).word(0x1100).word(4).word(256).word(0).word(0xFFFFFFFF);
    EXPECT_EQ(out, expected.bytes);
}

TEST(SimConnectWire, RequestClientDataHasTheAreaBeforeTheRequest) {
    Bytes out;
    SimConnectWire::appendRequestClientData(out, {8}, 0x1001, 0x1200, 0x1101, 3, 1, 21, 22, 23);
    Expected expected;
    expected.word(48).word(4).word(0xF000003B).word(8);
    expected.word(0x1001).word(0x1200).word(0x1101).word(3).word(1).word(21).word(22).word(23);
    EXPECT_EQ(out, expected.bytes);
}

TEST(SimConnectWire, SetClientDataIsAnArrayOfOneBlock) {
    Bytes out;
    const Bytes data{'M', 'F', 0xFF, 0x00, 0x80};
    SimConnectWire::appendSetClientData(out, {9}, 0x1000, 0x1100, 0, data);
    Expected expected;
    expected.word(41).word(4).word(0xF000003C).word(9).word(0x1000).word(0x1100).word(0).word(1).word(5);
    expected.bytes.insert(expected.bytes.end(), data.begin(), data.end());
    EXPECT_EQ(out, expected.bytes);
}

TEST(SimConnectWire, CommandBlockOf1024BytesIs1060BytesLong) {
    Bytes out;
    SimConnectWire::appendSetClientData(out, {9}, 1, 1, 0, Bytes(1024));
    EXPECT_EQ(out.size(), 1060U);
    EXPECT_EQ(SimConnectWire::numberAt(out, 0), 1060U);
}

TEST(SimConnectWire, RequestsAreAppendedBehindEachOther) {
    Bytes out;
    SimConnectWire::appendTransmitClientEvent(out, {1}, 0, 1, 0, 1, 0x10);
    SimConnectWire::appendTransmitClientEvent(out, {0xFFFFFFFF}, 0, 2, 0, 1, 0x10);
    ASSERT_EQ(out.size(), 72U);
    EXPECT_EQ(SimConnectWire::numberAt(out, 12), 1U);
    EXPECT_EQ(SimConnectWire::numberAt(out, 36 + 12), 0xFFFFFFFFU);
}

TEST(SimConnectWire, NameOf255BytesFitsAndOneOf256DoesNot) {
    EXPECT_TRUE(SimConnectWire::fitsNameField(""));
    EXPECT_TRUE(SimConnectWire::fitsNameField(std::string(255, 'x')));
    EXPECT_FALSE(SimConnectWire::fitsNameField(std::string(256, 'x')));
    Bytes out;
    SimConnectWire::appendMapClientEventToSimEvent(out, {1}, 1, std::string(255, 'x'));
    EXPECT_EQ(out.size(), 276U);
    EXPECT_EQ(out.back(), 0);
}

TEST(SimConnectWire, EmptyNameIsAFieldOfZeros) {
    Bytes out;
    SimConnectWire::appendMapClientEventToSimEvent(out, {1}, 1, "");
    EXPECT_EQ(Bytes(out.begin() + 20, out.end()), Bytes(256));
}

TEST(SimConnectWire, NumbersAreLittleEndianBothWays) {
    Bytes out{0xAA};
    SimConnectWire::appendNumber(out, 0x80C0FF01);
    EXPECT_EQ(out, (Bytes{0xAA, 0x01, 0xFF, 0xC0, 0x80}));
    EXPECT_EQ(SimConnectWire::numberAt(out, 1), 0x80C0FF01U);
}

} // namespace
