#include "platform/linux/hidraw_sysfs.h"

#include "tests/unit/platform/linux/hidraw_tree.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

using Paths = std::vector<std::string>;

constexpr const char* anyDevice = "/dev/null";

dev_t numberOf(const char* deviceFile) {
    struct stat status {};
    EXPECT_EQ(stat(deviceFile, &status), 0);
    return status.st_rdev;
}

TEST(HidrawSysfsNodeFolders, IsEmptyWithoutTheClass) {
    const TempFolder empty;
    EXPECT_EQ(HidrawSysfs::nodeFolders(empty.path()), Paths());
}

TEST(HidrawSysfsNodeFolders, IsEmptyWithoutNodes) {
    const HidrawTree tree;
    EXPECT_EQ(HidrawSysfs::nodeFolders(tree.root()), Paths());
}

TEST(HidrawSysfsNodeFolders, GivesResolvedFoldersByNodeNumber) {
    const HidrawTree tree;
    const std::string tenth = tree.plug("0003:2E8A:000A.0003", "hidraw10", anyDevice);
    const std::string second = tree.plug("0003:2E8A:000A.0009", "hidraw2", anyDevice);
    const std::string first = tree.plug("0003:2E8A:000A.0005", "hidraw0", anyDevice);
    EXPECT_EQ(HidrawSysfs::nodeFolders(tree.root()), (Paths{first, second, tenth}));
    EXPECT_TRUE(first.ends_with("/sys/devices/usb1/0003:2E8A:000A.0005/hidraw/hidraw0")) << first;
}

TEST(HidrawSysfsNodeFolders, ReplugUnderTheSameNodeIsAnotherPath) {
    const HidrawTree tree;
    const std::string before = tree.plug("0003:2E8A:000A.0005", "hidraw0", anyDevice);
    tree.unplug("0003:2E8A:000A.0005", "hidraw0");
    const std::string after = tree.plug("0003:2E8A:000A.0006", "hidraw0", anyDevice);
    EXPECT_EQ(HidrawSysfs::nodeFolders(tree.root()), Paths{after});
    EXPECT_NE(before, after);
}

TEST(HidrawSysfsNodeFolders, PassesOverALinkToNowhere) {
    const HidrawTree tree;
    const std::string present = tree.plug("0003:2E8A:000A.0006", "hidraw1", anyDevice);
    tree.link("../../../sys/devices/usb1/gone/hidraw/hidraw0", "sys/class/hidraw/hidraw0");
    EXPECT_EQ(HidrawSysfs::nodeFolders(tree.root()), Paths{present});
}

TEST(HidrawSysfsDeviceNode, LiesInDevUnderTheNodesName) {
    EXPECT_EQ(HidrawSysfs::deviceNode("/", "/sys/devices/x/hidraw/hidraw7"), "/dev/hidraw7");
    EXPECT_EQ(HidrawSysfs::deviceNode("/tmp/root", "/tmp/root/sys/x/hidraw/hidraw7"), "/tmp/root/dev/hidraw7");
}

TEST(HidrawSysfsHasDeviceNumber, HoldsForTheNodesOwnNumberAlone) {
    const HidrawTree tree;
    const std::string folder = tree.plug("0003:2E8A:000A.0005", "hidraw0", "/dev/null");
    EXPECT_TRUE(HidrawSysfs::hasDeviceNumber(folder, numberOf("/dev/null")));
    EXPECT_FALSE(HidrawSysfs::hasDeviceNumber(folder, numberOf("/dev/zero")));
}

TEST(HidrawSysfsHasDeviceNumber, DoesNotHoldOnceTheFolderHasGone) {
    const HidrawTree tree;
    const std::string folder = tree.plug("0003:2E8A:000A.0005", "hidraw0", "/dev/null");
    tree.unplug("0003:2E8A:000A.0005", "hidraw0");
    EXPECT_FALSE(HidrawSysfs::hasDeviceNumber(folder, numberOf("/dev/null")));
}

TEST(HidrawSysfsSerialNumber, IsTheDevicesUniqueText) {
    const HidrawTree tree;
    const std::string folder = tree.plug("0003:2E8A:000A.0005", "hidraw0", anyDevice, "E66038B713=A \xC3\xB3");
    EXPECT_EQ(HidrawSysfs::serialNumber(folder), "E66038B713=A \xC3\xB3");
}

TEST(HidrawSysfsSerialNumber, IsEmptyWhenTheDeviceHasNone) {
    const HidrawTree tree;
    EXPECT_EQ(HidrawSysfs::serialNumber(tree.plug("0003:2E8A:000A.0005", "hidraw0", anyDevice)), "");
    EXPECT_EQ(HidrawSysfs::serialNumber(tree.root()), "");
}

} // namespace
