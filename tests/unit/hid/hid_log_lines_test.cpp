#include "hid/hid_log_lines.h"

#include "hid/hex_text.h"

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<std::uint8_t>;

/// With each field that can be absent, and with numbers at the ends of their ranges.
const std::vector<HidEventLine>& eventLines() {
    const HidProtocol::HidEvent extremes{.type = 255, .controlId = 65535, .value = -128, .speed = 255, .mode = 255};
    static const std::vector<HidEventLine> lines = {
        {},
        {"B", 12, {.type = 4}, "", "", "", "Board Notice", "", 0, false, false, false},
        {"B", 0, {.type = 1}, "HOLD", "", "", "BUTTON", "", 0, false, false, false},
        {"B", 0, {.type = 1}, "HOLD", "PFD", "", "", "x y", 0, false, false, true},
        {"B", -1, extremes, "", "", "", "", "", 0, false, true, false},
        {"B", -1, {.type = 2, .value = 127}, "", "", "", "", "", 4294967295U, true, false, false},
        {"/dev/hidraw3 index=7 type=1",
         0,
         {.type = 2, .controlId = 21, .value = -3, .speed = 9},
         "ENC_CCW",
         "PFD",
         "MFD",
         "ENCODER",
         "HDG",
         1,
         true,
         true,
         true},
    };
    return lines;
}

std::string reportError(std::string_view line) {
    std::string error;
    EXPECT_FALSE(readHidReportLine(line, error)) << line;
    return error;
}

} // namespace

TEST(HidLogLines, ReaderGivesBackTheEventThatWasWritten) {
    for (const HidEventLine& line : eventLines()) {
        const std::string text = hidEventLine(line);
        EXPECT_EQ(readHidEventLine(text), line) << text;
        EXPECT_EQ(readHidEventLine("2026-01-31 12:00:00 [DEBUG] " + text), line) << text;
    }
}

TEST(HidLogLines, EventHasItsFieldsInTheirOrder) {
    EXPECT_EQ(hidEventLine(eventLines().front()), "HID event from  index=-1 type=0 controlId=0 value=0 speed=0 mode=0");
    EXPECT_EQ(hidEventLine(eventLines().back()),
              "HID event from /dev/hidraw3 index=7 type=1 index=0 type=2 action=ENC_CCW role=PFD "
              "configuredRole=MFD(ENCODER) controlId=21(HDG) value=-3 speed=9 mode=0 mfAmount=1 fast=1 "
              "simEvent=sent rpn=queued");
}

TEST(HidLogLines, ReaderOfEventsRefusesOtherLines) {
    for (const char* line : {"", "HID event from", "HID event from B", "HID IN device=B bytes=1 data=01",
                             "HID event from B type=1 controlId=2 value=1 speed=0 mode=0",
                             "HID event from B index=0 controlId=2 value=1 speed=0 mode=0",
                             "HID event from B index=0 type=1 value=1 speed=0 mode=0",
                             "HID event from B index=0 type=256 controlId=2 value=1 speed=0 mode=0",
                             "HID event from B index=0 type=1 controlId=2 value=1 speed=0",
                             "HID event from B index=x type=1 controlId=2 value=1 speed=0 mode=0",
                             "HID event from B index=0 type=1 controlId=2 value=1 mode=0",
                             "HID event from B index=0 type=1 controlId=2 speed=0 mode=0",
                             "HID event from B index=0 type=1 controlId=2(A value=1 speed=0 mode=0",
                             "HID event from B index=0 type=1 controlId=2x value=1 speed=0 mode=0",
                             "HID event from B index=0 type=1 controlId=2 value=1 speed=0 mode=0 mfAmount=x"}) {
        EXPECT_FALSE(readHidEventLine(line)) << line;
    }
}

TEST(HidLogLines, ReaderGivesBackTheReportThatWasWritten) {
    for (const std::string device : {"E66138A1B2C3D4E5", "/dev/hidraw3", R"(\\?\hid#vid_1234 bytes=5 data=#7)", ""}) {
        const HidReportLine report{device, {0x01, 0x00, 0xFF}};
        std::string error;
        const std::string text = hidReportLine(report.device, report.bytes);
        EXPECT_EQ(text, "HID IN device=" + device + " bytes=3 data=0100FF");
        EXPECT_EQ(readHidReportLine(text, error), report);
        EXPECT_EQ(readHidReportLine("2026-01-31 12:00:00 [DEBUG] " + text, error), report);
    }
}

TEST(HidLogLines, ReaderOfReportsSaysWhatIsMissing) {
    EXPECT_EQ(reportError("another line"), "the line's end is missing");
    for (const char* rest : {"", " bytes=32", " data=01"}) {
        EXPECT_EQ(reportError(std::string("HID IN device=BOARD") + rest), "the line's end is missing") << rest;
    }
    for (const char* rest :
         {"2 data=01", "1 data=0102", "1 data=0", "1 data=0G", "x data=01", "-1 data=01", "0 data=", " data=01"}) {
        EXPECT_EQ(reportError(std::string("HID IN device=B bytes=") + rest), "its bytes aren't as many as it says")
            << rest;
    }
    EXPECT_EQ(reportError(hidReportLine("B", Bytes(HidProtocol::reportSize + 1))),
              "its bytes aren't as many as it says");
}

TEST(HidLogLines, ReaderGivesBackTheConnectionThatWasWritten) {
    for (const HidConnectionLine& line : {HidConnectionLine{"a board index=3", 12}, HidConnectionLine{"", 0}}) {
        EXPECT_EQ(readHidConnectionLine("[INFO] " + hidConnectionLine(line)), line);
    }
    EXPECT_EQ(hidConnectionLine({"B", 1}), "HID device connected: B index=1");
    for (const char* line :
         {"HID device connected: B", "HID device connected: B index=", "HID device disconnected: B"}) {
        EXPECT_FALSE(readHidConnectionLine(line)) << line;
    }
}

TEST(HexText, IsReadBackInEitherCase) {
    EXPECT_EQ(bytesFromHex(hexText(Bytes{0x00, 0x0A, 0xFF})), (Bytes{0x00, 0x0A, 0xFF}));
    EXPECT_EQ(bytesFromHex("0aFf"), (Bytes{0x0A, 0xFF}));
    EXPECT_EQ(bytesFromHex(""), Bytes());
    for (const char* text : {"0", "0g", "0x", "-1", " 1", "012"}) {
        EXPECT_FALSE(bytesFromHex(text)) << text;
    }
}
