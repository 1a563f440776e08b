#include "wire/requests.h"

#include "tests/support/loopback_peer.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

// simconnect_api_test.cpp has the layouts of the other requests.
namespace {

using namespace SimConnectWire;

TEST(Requests, OpenHasTheNameAndTheLibraryOfItsProtocol) {
    // As captured from clients of each generation.
    const std::vector<std::pair<std::uint32_t, Bytes>> tails{
        {4, {0x00, 0x00, 0x00, 0x00, 0x00, 0x58, 0x53, 0x46, 0x0A, 0x00, 0x00, 0x00,
             0x00, 0x00, 0x00, 0x00, 0x4B, 0xEF, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}},
        {5, {0x00, 0x00, 0x00, 0x00, 0x00, 0x48, 0x4B, 0x00, 0x0B, 0x00, 0x00, 0x00,
             0x00, 0x00, 0x00, 0x00, 0xBB, 0xF4, 0x00, 0x00, 0x03, 0x00, 0x00, 0x00}},
        {6, {0x00, 0x00, 0x00, 0x00, 0x00, 0x52, 0x53, 0x00, 0x0C, 0x00, 0x00, 0x00,
             0x02, 0x00, 0x00, 0x00, 0x3E, 0x4E, 0x04, 0x00, 0xE7, 0x03, 0x00, 0x00}}};
    for (const auto& [protocol, tail] : tails) {
        Bytes out;
        appendOpen(out, {1, protocol}, "VantrelBridgeHID");
        EXPECT_EQ(out, joined({wireWords({296, protocol, 0xF0000001, 1}), nameField("VantrelBridgeHID"), tail}))
            << protocol;
    }
}

TEST(Requests, NameOf255BytesFitsAndOneOf256DoesNot) {
    EXPECT_FALSE(isName(nullptr));
    EXPECT_TRUE(isName(""));
    EXPECT_TRUE(isName(std::string(255, 'x').c_str()));
    EXPECT_FALSE(isName(std::string(256, 'x').c_str()));
}

TEST(Requests, NumbersAreLittleEndianBothWays) {
    Bytes out{0xAA};
    appendNumber(out, 0x80C0FF01);
    EXPECT_EQ(out, (Bytes{0xAA, 0x01, 0xFF, 0xC0, 0x80}));
    EXPECT_EQ(numberAt(out, 1), 0x80C0FF01U);
}

} // namespace
