#include "config/app_config.h"
#include "tests/unit/config/parsed_config.h"

#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

AppConfig withDevices(const std::string& devices) {
    return configWith("\"devices\":" + devices);
}

/// Profiles A, M and Z with a `min` of 1, 2 and 3; M is the default one.
AppConfig withProfiles() {
    return configWith(R"("outputs":{"defaultProfile":"m","roleProfiles":{"pfd":"z","mfd":"gone"},"profiles":{
        "a":{"backlight":{"min":1}},"m":{"backlight":{"min":2}},"z":{"backlight":{"min":3}}}})");
}

/// The `min` of the profile that an entry gets.
int resolvedMin(const AppConfig& config, const std::string& role, const std::string& ledProfile) {
    const DeviceEntry entry{"", 0, role, ledProfile};
    const OutputProfile* profile = resolveProfile(config, &entry);
    EXPECT_NE(profile, nullptr);
    return profile == nullptr ? -1 : profile->backlight.min;
}

TEST(Devices, AreReadInFileOrderWithAllKeys) {
    const AppConfig config =
        withDevices(R"([{"boardId":" 0x00aa bb ","index":3.9,"role":" Pfd ","ledProfile":" night "},{"index":0}])");
    std::vector<std::string> entries;
    for (const DeviceEntry& entry : config.outputs.devices) {
        entries.push_back(entry.boardId + "|" + std::to_string(entry.index) + "|" + entry.role + "|" +
                          entry.ledProfile);
    }
    EXPECT_EQ(entries, (std::vector<std::string>{"00AABB|3| Pfd | night ", "|0||"}));
}

TEST(Devices, AreAcceptedOrRefusedByTheirFirstFault) {
    const std::pair<const char*, std::vector<const char*>> cases[] = {
        {"'devices' must be an array", {"{}", "null", "\"[]\""}},
        {"devices[0] must be an object", {"[1]"}},
        {"devices[2] must be an object", {R"([{"index":1},{"index":2},[]])"}},
        {"devices[0] must include boardId or index",
         {"[{}]", R"([{"index":-5}])", R"([{"index":-1}])", R"([{"boardId":"0x"}])", R"([{"boardId":"  "}])"}},
        {"devices[1] must include boardId or index", {R"([{"index":1},{"boardId":12,"index":"3"}])"}},
        {"devices[0] index must be >= 0", {R"([{"boardId":"AA","index":-5}])", R"([{"boardId":"AA","index":1e10}])"}},
        // Beside a boardId, -1 is no index.
        {"", {"[]", R"([{"boardId":"0x","index":2}])", R"([{"boardId":"AA","index":-1.9}])"}},
        {"", {R"([{"boardId":"AA"},{"boardId":"aa"},{"index":1},{"index":1}])"}},
    };
    for (const auto& [error, rows] : cases) {
        for (const char* devices : rows) {
            EXPECT_EQ(errorWith(std::string("\"devices\":") + devices), error) << devices;
        }
    }
    EXPECT_EQ(withDevices(R"([{"boardId":"AA","index":-1.9}])").outputs.devices.at(0).index, -1);
    EXPECT_EQ(withDevices(R"([{"boardId":"0x","index":2}])").outputs.devices.at(0).boardId, "");
}

TEST(Devices, AreNotReadFromTheOutputsSection) {
    EXPECT_TRUE(configWith(R"("outputs":{"devices":[{"index":1}]})").outputs.devices.empty());
}

TEST(FindDeviceEntry, TakesTheFirstEntryOfTheIdentityElseTheFirstOfTheIndex) {
    const struct {
        const char* devices;
        const char* name;
        int index;
        /// -1: none.
        int entry;
    } cases[] = {
        {R"([{"boardId":"BB"},{"boardId":"0xaa"}])", " 0x a a ", -1, 1},
        {R"([{"index":0},{"boardId":"AA"}])", "AA", 0, 1},
        {R"([{"boardId":"AA","index":4},{"index":4}])", "ZZ", 4, 0},
        {R"([{"boardId":"AA","index":4},{"index":4}])", "", 4, 0},
        {R"([{"boardId":"AA"},{"boardId":"AA"}])", "AA", -1, 0},
        {R"([{"boardId":"AA"},{"index":1},{"index":1}])", "", 1, 1},
        // An entry without an index has index -1, which matches no board.
        {R"([{"boardId":"AA"}])", "ZZ", -1, -1},
        {R"([{"boardId":"AA"}])", "", -1, -1},
        // Nor does an entry without an identity match a name that normalises to nothing.
        {R"([{"index":5}])", "0x", -1, -1},
        {R"([{"index":5}])", " ", 6, -1},
        {"[]", "AA", 0, -1},
    };
    for (const auto& each : cases) {
        const AppConfig config = withDevices(each.devices);
        const DeviceEntry* expected =
            each.entry < 0 ? nullptr : &config.outputs.devices[static_cast<std::size_t>(each.entry)];
        EXPECT_EQ(findDeviceEntry(config, each.name, each.index), expected) << each.devices << " / " << each.name;
    }
}

TEST(ResolveProfile, TakesTheEntrysProfileElseTheRolesElseTheDefaultOne) {
    const AppConfig config = withProfiles();
    EXPECT_EQ(resolveProfile(config, nullptr), &config.outputs.profiles.at("M"));
    const std::tuple<const char*, const char*, int> cases[] = {
        {"pfd", " A ", 1},
        {" Pfd ", "", 3},
        {"pfd", "  ", 3},
        {"copilot", "", 2},
        {"", "", 2},
        // A chosen name that doesn't exist gives the first profile.
        {"", "gone", 1},
        {"pfd", "gone", 1},
        {"mfd", "", 1},
    };
    for (const auto& [role, ledProfile, min] : cases) {
        EXPECT_EQ(resolvedMin(config, role, ledProfile), min) << role << " / " << ledProfile;
    }
}

TEST(ResolveProfile, NormalisesARecordThatDidNotComeFromAFile) {
    AppConfig config = withProfiles();
    config.outputs.roleProfiles = {{"PFD", " z "}, {"MFD", " "}};
    config.outputs.defaultProfile = " m ";
    EXPECT_EQ(resolvedMin(config, "pfd", ""), 3);
    EXPECT_EQ(resolvedMin(config, "mfd", ""), 2);
    // Nor need its default profile exist.
    config.outputs.defaultProfile = "gone";
    EXPECT_EQ(resolveProfile(config, nullptr), &config.outputs.profiles.at("A"));
    config.outputs.profiles.clear();
    EXPECT_EQ(resolveProfile(config, nullptr), nullptr);
}

} // namespace
