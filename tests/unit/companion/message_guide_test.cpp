#include "companion/guide/message_guide.h"

#include <gtest/gtest.h>

namespace {

MessageExplanation explain(std::string_view message) {
    return MessageGuide::instance().explain(message);
}

} // namespace

TEST(MessageGuide, ExplainsMessagesAsThePageDoes) {
    EXPECT_EQ(explain("Missing 'mappings' section").remedy, "Add it");
    EXPECT_EQ(explain("devices[12] must be an object").meaning, "Elements are counted from 0");
    EXPECT_EQ(explain("Failed to open config file: /etc/a b.json").remedy, "Check its permissions");
    EXPECT_EQ(explain("no message of the bridge").meaning, "");
}

TEST(MessageGuide, PrefersTheExplanationOfTheReason) {
    EXPECT_EQ(explain("Config parse error: Expected ':' after key").meaning, "A colon is missing");
    EXPECT_EQ(explain("Failed to load button config: Button config root must be an object").meaning,
              "The file doesn't begin with {");
    EXPECT_EQ(explain("Failed to start HID manager: something new").remedy, "See Invalid VID/PID");
}

TEST(MessageGuide, WritesOutTheSameOfTheRowAbove) {
    EXPECT_EQ(explain("mobiflight.lvarsChannel is required when enabled").meaning,
              explain("mobiflight.commandChannel is required when enabled").meaning);
    EXPECT_NE(explain("mobiflight.lvarsChannel is required when enabled").meaning, "");
}
