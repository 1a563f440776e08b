#include "hid/hex_text.h"
#include "hid/hid_protocol.h"

#include <gtest/gtest.h>

#include <limits>

using HidProtocol::HidEvent;
using HidProtocol::HidEventAction;
using HidProtocol::Report;

namespace {

HidEventAction classifyValue(int type, int value) {
    HidEvent event;
    event.type = static_cast<std::uint8_t>(type);
    event.value = static_cast<std::int8_t>(value);
    return HidProtocol::classify(event);
}

} // namespace

TEST(Classify, ButtonValueOneIsPressAndZeroIsRelease) {
    EXPECT_EQ(classifyValue(1, 1), HidEventAction::ButtonPress);
    EXPECT_EQ(classifyValue(1, 0), HidEventAction::ButtonRelease);
}

TEST(Classify, ButtonValuesTwoToFourAreHold) {
    for (const int value : {2, 3, 4}) {
        EXPECT_EQ(classifyValue(1, value), HidEventAction::Hold) << value;
    }
}

TEST(Classify, AnyOtherButtonValueIsNone) {
    for (int value = 5; value < 256; ++value) {
        EXPECT_EQ(classifyValue(1, value), HidEventAction::None) << value;
    }
}

TEST(Classify, EncoderGoesByTheSignAlone) {
    for (int value = 1; value < 128; ++value) {
        EXPECT_EQ(classifyValue(2, value), HidEventAction::EncCw) << value;
    }
    for (int value = 128; value < 256; ++value) {
        EXPECT_EQ(classifyValue(2, value), HidEventAction::EncCcw) << value;
    }
}

TEST(Classify, ByteFFIsCounterClockwiseForAnEncoderAndNothingForAButton) {
    EXPECT_EQ(classifyValue(2, 0xFF), HidEventAction::EncCcw);
    EXPECT_EQ(classifyValue(1, 0xFF), HidEventAction::None);
}

TEST(Classify, EncoderValueZeroIsNone) {
    EXPECT_EQ(classifyValue(2, 0), HidEventAction::None);
}

TEST(Classify, EveryOtherTypeIsNoneWhateverItsValue) {
    for (int type = 0; type < 256; ++type) {
        if (type == 1 || type == 2) {
            continue;
        }
        for (int value = 0; value < 256; ++value) {
            ASSERT_EQ(classifyValue(type, value), HidEventAction::None) << type << " " << value;
        }
    }
}

TEST(Classify, LooksAtTypeAndValueOnly) {
    EXPECT_EQ(HidProtocol::classify({0xFF, 1, 0xFFFF, 1, 0xFF, 0xFF, 0xFFFF}), HidEventAction::ButtonPress);
}

TEST(ActionNumbers, AreFixed) {
    EXPECT_EQ(static_cast<int>(HidEventAction::None), 0);
    EXPECT_EQ(static_cast<int>(HidEventAction::ButtonPress), 1);
    EXPECT_EQ(static_cast<int>(HidEventAction::ButtonRelease), 2);
    EXPECT_EQ(static_cast<int>(HidEventAction::Hold), 3);
    EXPECT_EQ(static_cast<int>(HidEventAction::EncCw), 4);
    EXPECT_EQ(static_cast<int>(HidEventAction::EncCcw), 5);
}

TEST(ActionName, GivesThePrintedNames) {
    EXPECT_STREQ(HidProtocol::actionName(HidEventAction::None), "NONE");
    EXPECT_STREQ(HidProtocol::actionName(HidEventAction::ButtonPress), "BUTTON_PRESS");
    EXPECT_STREQ(HidProtocol::actionName(HidEventAction::ButtonRelease), "BUTTON_RELEASE");
    EXPECT_STREQ(HidProtocol::actionName(HidEventAction::Hold), "HOLD");
    EXPECT_STREQ(HidProtocol::actionName(HidEventAction::EncCw), "ENC_CW");
    EXPECT_STREQ(HidProtocol::actionName(HidEventAction::EncCcw), "ENC_CCW");
}

TEST(ActionName, IsNoneForAnyUnknownNumber) {
    for (const int number : {-1, 6, 255, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        EXPECT_STREQ(HidProtocol::actionName(static_cast<HidEventAction>(number)), "NONE") << number;
    }
}

TEST(HoldValue, IsTwoThreeOrFour) {
    for (int value = -128; value < 128; ++value) {
        EXPECT_EQ(HidProtocol::isHoldValue(static_cast<std::int8_t>(value)), value >= 2 && value <= 4) << value;
    }
}

TEST(EncodeLedCtl, FlashFillsItsFieldsLittleEndian) {
    const LedCommand command{3, 0, 4, 500, 200};
    EXPECT_EQ(HidProtocol::encodeLedCtl(command), (Report{0x10, 0x03, 0x00, 0x04, 0xF4, 0x01, 0xC8}));
}

TEST(EncodeLedCtl, SteadyFillsBrightness) {
    EXPECT_EQ(HidProtocol::encodeLedCtl({1, 0x7F, 0, 0, 0}), (Report{0x10, 0x01, 0x7F}));
}

TEST(EncodeLedCtl, DefaultCommandIsTheIdAndZeros) {
    EXPECT_EQ(HidProtocol::encodeLedCtl({}), (Report{0x10}));
}

TEST(EncodeLedCtl, CarriesEveryMaximum) {
    EXPECT_EQ(HidProtocol::encodeLedCtl({255, 255, 255, 65535, 255}),
              (Report{0x10, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}));
}

TEST(EncodeSimStatus, IsOneWhenConnected) {
    EXPECT_EQ(HidProtocol::encodeSimStatus(true), (Report{0x11, 0x01}));
}

TEST(EncodeSimStatus, IsZeroOtherwise) {
    EXPECT_EQ(HidProtocol::encodeSimStatus(false), (Report{0x11, 0x00}));
}

TEST(EncodeBootsel, IsActionTwo) {
    EXPECT_EQ(HidProtocol::encodeBootsel(), (Report{0x12, 0x02}));
}

TEST(HexText, GivesTwoUpperCaseDigitsForEachByte) {
    const std::array<std::uint8_t, 4> bytes{0x00, 0x0A, 0xA0, 0xFF};
    EXPECT_EQ(hexText(bytes), "000AA0FF");
    EXPECT_EQ(hexText({}), "");
}
