#include "config/hid_event_map.h"

#include "tests/support/config_samples.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace {

using Names = std::map<std::int32_t, std::string>;

HidEventMap parsedMap(std::string_view text) {
    HidEventMap map;
    std::string error = "kept";
    EXPECT_TRUE(map.parse(text, error)) << error;
    EXPECT_EQ(error, "kept");
    return map;
}

/// The control names of a map whose `control_ids` is this.
Names controls(const std::string& controlIds) {
    return parsedMap(R"({"event_types":{"button":1},"version":2,"control_ids":)" + controlIds + "}").controlIds;
}

TEST(HidEventMap, MapsNumbersToNames) {
    const HidEventMap map =
        parsedMap(R"({"event_types":{"button":1,"encoder":2},"control_ids":{"AP_MASTER":5,"HDG":300}})");
    EXPECT_EQ(map.eventTypes, (Names{{1, "button"}, {2, "encoder"}}));
    EXPECT_EQ(map.controlIds, (Names{{5, "AP_MASTER"}, {300, "HDG"}}));
}

TEST(HidEventMap, RefusesADocumentByItsFirstFault) {
    const std::string noTypes = "Event map missing valid event_types entries";
    const std::string noControls = "Event map missing valid control_ids entries";
    const std::pair<const char*, std::string> cases[] = {
        {"{}", noTypes},
        {R"({"event_types":{},"control_ids":{"A":1}})", noTypes},
        {R"({"event_types":[1],"control_ids":{"A":1}})", noTypes},
        {R"({"event_types":{"a":"1","b":"2"},"control_ids":{"A":1}})", noTypes},
        {R"({"Event_Types":{"a":1},"control_ids":{"A":1}})", noTypes},
        {R"({"event_types":{"a":1}})", noControls},
        {R"({"event_types":{"a":1},"control_ids":{}})", noControls},
        {R"({"event_types":{"a":1},"control_ids":null})", noControls},
        {R"({"event_types":{"a":1},"control_ids":{"A":true}})", noControls},
    };
    for (const auto& [text, expected] : cases) {
        HidEventMap map;
        std::string error;
        EXPECT_FALSE(map.parse(text, error));
        EXPECT_EQ(error, expected) << text;
    }
}

TEST(HidEventMap, KeepsTheOldMapsUntilTheRootIsAnObject) {
    HidEventMap map = parsedMap(ConfigSamples::eventMap());
    std::string error;
    EXPECT_FALSE(map.parse("{", error));
    EXPECT_FALSE(map.parse("[]", error));
    EXPECT_EQ(map.eventTypes.size(), 1U);
    EXPECT_EQ(map.controlIds.size(), 1U);
    EXPECT_FALSE(map.parse(R"({"control_ids":{"A":7}})", error));
    EXPECT_TRUE(map.eventTypes.empty());
    EXPECT_EQ(map.controlIds, (Names{{7, "A"}}));
    EXPECT_FALSE(map.parse(R"({"event_types":{"b":2}})", error));
    EXPECT_EQ(map.eventTypes, (Names{{2, "b"}}));
    EXPECT_TRUE(map.controlIds.empty());
}

TEST(HidEventMap, TakesNumbersOnlyAndTruncatesThem) {
    EXPECT_EQ(controls(R"({"A":7.9,"B":"2","C":null,"D":{"E":3},"F":-0.9,"G":-4})"),
              (Names{{-4, "G"}, {0, "F"}, {7, "A"}}));
}

TEST(HidEventMap, KeepsTheLaterOfTwoNamesForOneNumber) {
    EXPECT_EQ(controls(R"({"B":1,"A":1})"), (Names{{1, "B"}}));
    EXPECT_EQ(controls(R"({"a":1.2,"Z":1.9})"), (Names{{1, "a"}}));
}

TEST(HidEventMap, KeepsNamesByteForByte) {
    EXPECT_EQ(controls(R"({" nav swap ":1,"A":2,"a":3,"":4,"A\u0000b":5})"),
              (Names{{1, " nav swap "}, {2, "A"}, {3, "a"}, {4, ""}, {5, std::string("A\0b", 3)}}));
}

} // namespace
