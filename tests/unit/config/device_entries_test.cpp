#include "config/app_config.h"
#include "tests/support/config_samples.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string errorWith(const std::string& devices) {
    AppConfig config;
    std::string error;
    const std::string text = ConfigSamples::appConfig("\"devices\":" + devices);
    const bool loaded = parseAppConfig(text, "config.json", config, error);
    EXPECT_EQ(loaded, error.empty());
    return error;
}

AppConfig configWith(const std::string& members) {
    AppConfig config;
    std::string error;
    EXPECT_TRUE(parseAppConfig(ConfigSamples::appConfig(members), "config.json", config, error)) << error;
    return config;
}

AppConfig withDevices(const std::string& devices) {
    return configWith("\"devices\":" + devices);
}

/// Profiles A, M and Z told apart by `min` 1, 2 and 3; M is the default one.
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
    ASSERT_EQ(config.outputs.devices.size(), 2U);
    const DeviceEntry& first = config.outputs.devices[0];
    EXPECT_EQ(first.boardId, "00AABB");
    EXPECT_EQ(first.index, 3);
    EXPECT_EQ(first.role, " Pfd ");
    EXPECT_EQ(first.ledProfile, " night ");
    const DeviceEntry& second = config.outputs.devices[1];
    EXPECT_EQ(second.boardId, "");
    EXPECT_EQ(second.index, 0);
    EXPECT_EQ(second.role, "");
    EXPECT_EQ(second.ledProfile, "");
}

TEST(Devices, AreAcceptedOrRefusedByTheirFirstFault) {
    const std::string noError;
    const std::string noIdentity = " must include boardId or index";
    const struct {
        const char* devices;
        std::string error;
    } cases[] = {
        {"[]", noError},
        {"{}", "'devices' must be an array"},
        {"null", "'devices' must be an array"},
        {"\"[]\"", "'devices' must be an array"},
        {"[1]", "devices[0] must be an object"},
        {R"([{"index":1},{"index":2},[]])", "devices[2] must be an object"},
        {"[{}]", "devices[0]" + noIdentity},
        {R"([{"index":-5}])", "devices[0]" + noIdentity},
        {R"([{"index":-1}])", "devices[0]" + noIdentity},
        {R"([{"boardId":"0x"}])", "devices[0]" + noIdentity},
        {R"([{"boardId":"  "}])", "devices[0]" + noIdentity},
        {R"([{"index":1},{"boardId":12,"index":"3"}])", "devices[1]" + noIdentity},
        {R"([{"boardId":"0x","index":2}])", noError},
        {R"([{"boardId":"AA","index":-5}])", "devices[0] index must be >= 0"},
        {R"([{"boardId":"AA","index":1e10}])", "devices[0] index must be >= 0"},
        // Beside a boardId, -1 is no index.
        {R"([{"boardId":"AA","index":-1.9}])", noError},
        {R"([{"boardId":"AA"},{"boardId":"aa"},{"index":1},{"index":1}])", noError},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(errorWith(each.devices), each.error) << each.devices;
    }
    EXPECT_EQ(withDevices(R"([{"boardId":"AA","index":-1.9}])").outputs.devices.at(0).index, -1);
    EXPECT_EQ(withDevices(R"([{"boardId":"0x","index":2}])").outputs.devices.at(0).boardId, "");
}

TEST(Devices, AreNotReadFromTheOutputsSection) {
    EXPECT_TRUE(configWith("").outputs.devices.empty());
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
    const struct {
        const char* role;
        const char* ledProfile;
        int min;
    } cases[] = {
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
    for (const auto& each : cases) {
        EXPECT_EQ(resolvedMin(config, each.role, each.ledProfile), each.min) << each.role << " / " << each.ledProfile;
    }
}

TEST(ResolveProfile, NormalisesARecordThatDidNotComeFromAFile) {
    AppConfig config = withProfiles();
    config.outputs.roleProfiles = {{"PFD", " z "}, {"MFD", " "}};
    config.outputs.defaultProfile = " m ";
    EXPECT_EQ(resolvedMin(config, "pfd", ""), 3);
    EXPECT_EQ(resolvedMin(config, "mfd", ""), 2);
}

TEST(ResolveProfile, ADefaultProfileThatDoesNotExistGivesTheFirstProfile) {
    AppConfig config = withProfiles();
    config.outputs.defaultProfile = "gone";
    EXPECT_EQ(resolveProfile(config, nullptr), &config.outputs.profiles.at("A"));
}

TEST(ResolveProfile, GivesNothingWithoutProfiles) {
    const AppConfig config;
    const DeviceEntry entry{"AA", 0, "pfd", "a"};
    EXPECT_EQ(resolveProfile(config, nullptr), nullptr);
    EXPECT_EQ(resolveProfile(config, &entry), nullptr);
}

} // namespace
