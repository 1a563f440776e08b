#include "platform/linux/hidraw_sysfs.h"

#include "tests/unit/platform/linux/test_board.h"

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

class HidrawSysfsTest : public testing::Test {
protected:
    const HidrawTree tree;

    Paths nodeFolders() const { return HidrawSysfs::nodeFolders(tree.root()); }
};

TEST_F(HidrawSysfsTest, NodeFoldersAreNoneWithoutTheClassOrNodes) {
    EXPECT_EQ(HidrawSysfs::nodeFolders(tree.root() + "/dev"), Paths());
    EXPECT_EQ(nodeFolders(), Paths());
}

TEST_F(HidrawSysfsTest, NodeFoldersAreResolvedInTheOrderOfTheirNumbers) {
    const std::string tenth = tree.plug("0003:2E8A:000A.0003", "hidraw10", anyDevice);
    const std::string second = tree.plug("0003:2E8A:000A.0009", "hidraw2", anyDevice);
    const std::string first = tree.plug(TestBoard::instance, "hidraw0", anyDevice);
    tree.link("../../../sys/devices/usb1/gone/hidraw/hidraw1", "sys/class/hidraw/hidraw1");
    EXPECT_EQ(nodeFolders(), (Paths{first, second, tenth}));
    EXPECT_TRUE(first.ends_with("/sys/devices/usb1/0003:2E8A:000A.0005/hidraw/hidraw0")) << first;
}

TEST_F(HidrawSysfsTest, HasDeviceNumberAcceptsTheNodesOwnNumberWhileItsFolderExists) {
    const std::string folder = tree.plug(TestBoard::instance, "hidraw0", "/dev/null");
    EXPECT_TRUE(HidrawSysfs::hasDeviceNumber(folder, numberOf("/dev/null")));
    EXPECT_FALSE(HidrawSysfs::hasDeviceNumber(folder, numberOf("/dev/zero")));
    tree.unplug(TestBoard::instance, "hidraw0");
    EXPECT_FALSE(HidrawSysfs::hasDeviceNumber(folder, numberOf("/dev/null")));
}

TEST_F(HidrawSysfsTest, SerialNumberIsTheDevicesUniqueText) {
    EXPECT_EQ(HidrawSysfs::serialNumber(tree.plug(TestBoard::instance, "hidraw0", anyDevice, "E66038B713=A \xC3\xB3")),
              "E66038B713=A \xC3\xB3");
    EXPECT_EQ(HidrawSysfs::serialNumber(tree.plug("0003:2E8A:000A.0006", "hidraw1", anyDevice)), "");
    EXPECT_EQ(HidrawSysfs::serialNumber(tree.root()), "");
}

} // namespace
