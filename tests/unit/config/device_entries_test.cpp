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

} // namespace

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

TEST(Devices, MayBeAbsentOrEmpty) {
    EXPECT_TRUE(configWith("").outputs.devices.empty());
    EXPECT_TRUE(withDevices("[]").outputs.devices.empty());
}

TEST(Devices, MustBeAnArray) {
    EXPECT_EQ(errorWith("{}"), "'devices' must be an array");
    EXPECT_EQ(errorWith("null"), "'devices' must be an array");
    EXPECT_EQ(errorWith("\"[]\""), "'devices' must be an array");
}

TEST(Devices, AreNotReadFromTheOutputsSection) {
    EXPECT_TRUE(configWith(R"("outputs":{"devices":[{"index":1}]})").outputs.devices.empty());
}

TEST(Devices, MustBeObjects) {
    EXPECT_EQ(errorWith("[1]"), "devices[0] must be an object");
    EXPECT_EQ(errorWith(R"([{"index":1},{"index":2},[]])"), "devices[2] must be an object");
}

TEST(Devices, NeedABoardIdOrAnIndex) {
    EXPECT_EQ(errorWith("[{}]"), "devices[0] must include boardId or index");
    EXPECT_EQ(errorWith(R"([{"index":-5}])"), "devices[0] must include boardId or index");
    EXPECT_EQ(errorWith(R"([{"index":-1}])"), "devices[0] must include boardId or index");
    EXPECT_EQ(errorWith(R"([{"index":1},{"boardId":12,"index":"3"}])"), "devices[1] must include boardId or index");
}

TEST(Devices, ABoardIdThatNormalisesToNothingIsNone) {
    EXPECT_EQ(errorWith(R"([{"boardId":"0x"}])"), "devices[0] must include boardId or index");
    EXPECT_EQ(errorWith(R"([{"boardId":"  "}])"), "devices[0] must include boardId or index");
    EXPECT_EQ(withDevices(R"([{"boardId":"0x","index":2}])").outputs.devices.at(0).boardId, "");
}

TEST(Devices, RefuseAnIndexBelowMinusOneBesideABoardId) {
    EXPECT_EQ(errorWith(R"([{"boardId":"AA","index":-5}])"), "devices[0] index must be >= 0");
    EXPECT_EQ(errorWith(R"([{"boardId":"AA","index":1e10}])"), "devices[0] index must be >= 0");
}

TEST(Devices, MinusOneBesideABoardIdMeansNoIndex) {
    EXPECT_EQ(withDevices(R"([{"boardId":"AA","index":-1}])").outputs.devices.at(0).index, -1);
    EXPECT_EQ(withDevices(R"([{"boardId":"AA","index":-1.9}])").outputs.devices.at(0).index, -1);
}

TEST(Devices, MayBeDuplicates) {
    EXPECT_EQ(withDevices(R"([{"boardId":"AA"},{"boardId":"aa"},{"index":1},{"index":1}])").outputs.devices.size(), 4U);
}

TEST(FindDeviceEntry, MatchesTheNormalisedIdentity) {
    const AppConfig config = withDevices(R"([{"boardId":"BB"},{"boardId":"0xaa"}])");
    EXPECT_EQ(findDeviceEntry(config, "AA", -1), &config.outputs.devices[1]);
    EXPECT_EQ(findDeviceEntry(config, " 0x a a ", -1), &config.outputs.devices[1]);
}

TEST(FindDeviceEntry, AnIdentityAnywhereBeatsAnEarlierIndex) {
    const AppConfig config = withDevices(R"([{"index":0},{"boardId":"AA"}])");
    EXPECT_EQ(findDeviceEntry(config, "AA", 0), &config.outputs.devices[1]);
}

TEST(FindDeviceEntry, FallsBackToTheIndex) {
    const AppConfig config = withDevices(R"([{"boardId":"AA","index":4},{"index":4}])");
    EXPECT_EQ(findDeviceEntry(config, "ZZ", 4), &config.outputs.devices[0]);
    EXPECT_EQ(findDeviceEntry(config, "", 4), &config.outputs.devices[0]);
}

TEST(FindDeviceEntry, TheFirstOfSeveralMatchesCounts) {
    const AppConfig config = withDevices(R"([{"boardId":"AA"},{"boardId":"AA"},{"index":1},{"index":1}])");
    EXPECT_EQ(findDeviceEntry(config, "AA", -1), &config.outputs.devices[0]);
    EXPECT_EQ(findDeviceEntry(config, "", 1), &config.outputs.devices[2]);
}

TEST(FindDeviceEntry, ANegativeIndexMatchesNoEntryWithoutOne) {
    const AppConfig config = withDevices(R"([{"boardId":"AA"}])");
    EXPECT_EQ(findDeviceEntry(config, "ZZ", -1), nullptr);
    EXPECT_EQ(findDeviceEntry(config, "", -1), nullptr);
}

TEST(FindDeviceEntry, ANameThatNormalisesToNothingMatchesNoIdentity) {
    const AppConfig config = withDevices(R"([{"index":5}])");
    EXPECT_EQ(findDeviceEntry(config, "0x", -1), nullptr);
    EXPECT_EQ(findDeviceEntry(config, " ", 6), nullptr);
}

TEST(FindDeviceEntry, GivesNothingFromAnEmptyList) {
    EXPECT_EQ(findDeviceEntry(AppConfig(), "AA", 0), nullptr);
}

TEST(ResolveProfile, ABoardWithoutAnEntryGetsTheDefaultProfile) {
    const AppConfig config = withProfiles();
    EXPECT_EQ(resolveProfile(config, nullptr), &config.outputs.profiles.at("M"));
}

TEST(ResolveProfile, AnEntrysOwnProfileComesFirst) {
    EXPECT_EQ(resolvedMin(withProfiles(), "pfd", " A "), 1);
}

TEST(ResolveProfile, TheRolesProfileComesNext) {
    EXPECT_EQ(resolvedMin(withProfiles(), " Pfd ", ""), 3);
    EXPECT_EQ(resolvedMin(withProfiles(), "pfd", "  "), 3);
}

TEST(ResolveProfile, ARoleWithoutAProfileGetsTheDefaultOne) {
    EXPECT_EQ(resolvedMin(withProfiles(), "copilot", ""), 2);
    EXPECT_EQ(resolvedMin(withProfiles(), "", ""), 2);
}

TEST(ResolveProfile, AChosenNameThatDoesNotExistGivesTheFirstProfile) {
    EXPECT_EQ(resolvedMin(withProfiles(), "", "gone"), 1);
    EXPECT_EQ(resolvedMin(withProfiles(), "pfd", "gone"), 1);
    EXPECT_EQ(resolvedMin(withProfiles(), "mfd", ""), 1);
}

TEST(ResolveProfile, NormalisesARecordThatWasFilledByHand) {
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
