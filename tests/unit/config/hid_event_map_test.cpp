#include "config/hid_event_map.h"

#include "tests/support/config_samples.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <string_view>

namespace {

using Names = std::map<std::int32_t, std::string>;

std::string errorOf(std::string_view text) {
    HidEventMap map;
    std::string error;
    const bool loaded = map.parse(text, error);
    EXPECT_EQ(loaded, error.empty()) << text;
    return error;
}

HidEventMap parsed(std::string_view text) {
    HidEventMap map;
    std::string error;
    EXPECT_TRUE(map.parse(text, error)) << error;
    return map;
}

/// The control names of a map whose `control_ids` is this.
Names controls(const std::string& controlIds) {
    return parsed(R"({"event_types":{"button":1},"control_ids":)" + controlIds + "}").controlIds;
}

} // namespace

TEST(HidEventMapParse, TurnsNamesToNumbersRound) {
    const HidEventMap map =
        parsed(R"({"event_types":{"button":1,"encoder":2},"control_ids":{"AP_MASTER":5,"HDG":300}})");
    EXPECT_EQ(map.eventTypes, (Names{{1, "button"}, {2, "encoder"}}));
    EXPECT_EQ(map.controlIds, (Names{{5, "AP_MASTER"}, {300, "HDG"}}));
}

TEST(HidEventMapParse, PutsItsPrefixBeforeAParseError) {
    EXPECT_EQ(errorOf("nul"), "Event map parse error: Invalid null");
}

TEST(HidEventMapParse, NeedsAnObjectAtTheRoot) {
    EXPECT_EQ(errorOf("[]"), "Event map root must be an object");
}

TEST(HidEventMapParse, NeedsEventTypes) {
    const std::string message = "Event map missing valid event_types entries";
    EXPECT_EQ(errorOf(R"({"control_ids":{"A":1}})"), message);
    EXPECT_EQ(errorOf(R"({"event_types":{},"control_ids":{"A":1}})"), message);
    EXPECT_EQ(errorOf(R"({"event_types":[1],"control_ids":{"A":1}})"), message);
    EXPECT_EQ(errorOf(R"({"event_types":{"a":"1","b":"2"},"control_ids":{"A":1}})"), message);
}

TEST(HidEventMapParse, NeedsControlIds) {
    const std::string message = "Event map missing valid control_ids entries";
    EXPECT_EQ(errorOf(R"({"event_types":{"a":1}})"), message);
    EXPECT_EQ(errorOf(R"({"event_types":{"a":1},"control_ids":{}})"), message);
    EXPECT_EQ(errorOf(R"({"event_types":{"a":1},"control_ids":null})"), message);
    EXPECT_EQ(errorOf(R"({"event_types":{"a":1},"control_ids":{"A":true}})"), message);
}

TEST(HidEventMapParse, TellsTheEventTypesFirst) {
    EXPECT_EQ(errorOf("{}"), "Event map missing valid event_types entries");
}

TEST(HidEventMapParse, KeepsWhatTheOtherMemberGave) {
    HidEventMap map;
    std::string error;
    EXPECT_FALSE(map.parse(R"({"control_ids":{"A":1}})", error));
    EXPECT_EQ(map.controlIds, (Names{{1, "A"}}));
    EXPECT_TRUE(map.eventTypes.empty());
    EXPECT_FALSE(map.parse(R"({"event_types":{"b":2}})", error));
    EXPECT_EQ(map.eventTypes, (Names{{2, "b"}}));
    EXPECT_TRUE(map.controlIds.empty());
}

TEST(HidEventMapParse, KeepsTheOldMapsUntilTheRootIsGood) {
    HidEventMap map = parsed(ConfigSamples::eventMap());
    std::string error;
    EXPECT_FALSE(map.parse("{", error));
    EXPECT_FALSE(map.parse("[]", error));
    EXPECT_EQ(map.eventTypes.size(), 1U);
    EXPECT_EQ(map.controlIds.size(), 1U);
    EXPECT_FALSE(map.parse("{}", error));
    EXPECT_TRUE(map.eventTypes.empty());
    EXPECT_TRUE(map.controlIds.empty());
}

TEST(HidEventMapParse, ReplacesTheOldMaps) {
    HidEventMap map = parsed(ConfigSamples::eventMap());
    std::string error = "kept";
    EXPECT_TRUE(map.parse(R"({"event_types":{"x":8},"control_ids":{"Y":9}})", error));
    EXPECT_EQ(map.eventTypes, (Names{{8, "x"}}));
    EXPECT_EQ(map.controlIds, (Names{{9, "Y"}}));
    EXPECT_EQ(error, "kept");
}

TEST(HidEventMapParse, TruncatesNumbersTowardZero) {
    EXPECT_EQ(controls(R"({"A":7.9})"), (Names{{7, "A"}}));
    EXPECT_EQ(controls(R"({"A":-0.9})"), (Names{{0, "A"}}));
    EXPECT_EQ(controls(R"({"A":1e10})"), (Names{{std::numeric_limits<std::int32_t>::min(), "A"}}));
}

TEST(HidEventMapParse, SkipsMembersOfAnotherKind) {
    EXPECT_EQ(controls(R"({"A":1,"B":"2","C":null,"D":{"E":3}})"), (Names{{1, "A"}}));
}

TEST(HidEventMapParse, OfTwoNamesForOneNumberTheLaterInOrderIsKept) {
    EXPECT_EQ(controls(R"({"B":1,"A":1})"), (Names{{1, "B"}}));
    EXPECT_EQ(controls(R"({"a":1.2,"Z":1.9})"), (Names{{1, "a"}}));
}

TEST(HidEventMapParse, KeepsNamesAsTheyStand) {
    EXPECT_EQ(controls(R"({" nav swap ":1,"A":2,"a":3,"":4})"),
              (Names{{1, " nav swap "}, {2, "A"}, {3, "a"}, {4, ""}}));
}

TEST(HidEventMapParse, NegativeNumbersLoad) {
    EXPECT_EQ(controls(R"({"A":-4})"), (Names{{-4, "A"}}));
}

TEST(HidEventMapParse, KnowsNoHexadecimalForm) {
    EXPECT_EQ(errorOf(R"({"event_types":{"a":0x1},"control_ids":{"A":1}})"),
              "Event map parse error: Expected ',' or '}'");
}

TEST(HidEventMapParse, IgnoresOtherMembersAndOtherSpellings) {
    EXPECT_EQ(errorOf(R"({"Event_Types":{"a":1},"control_ids":{"A":1}})"),
              "Event map missing valid event_types entries");
    EXPECT_EQ(controls(R"({"A":1},"version":2,"notes":[{}])").size(), 1U);
}

TEST(HidEventMapParse, KeepsZeroBytesOfNames) {
    EXPECT_EQ(controls(R"({"A\u0000b":1})").at(1), std::string("A\0b", 3));
}
