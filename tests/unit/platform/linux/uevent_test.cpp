#include "platform/linux/uevent.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

constexpr UeventSender kernel{ueventGroupKernel, 0, 0U};
constexpr UeventSender udev{ueventGroupUdev, 4711, 0U};

std::string properties(const std::string& action, const std::string& subsystem) {
    const std::string end(1, '\0');
    return "ACTION=" + action + end + "DEVPATH=/devices/usb1/0003:2E8A:000A.0005/hidraw/hidraw0" + end +
           "SUBSYSTEM=" + subsystem + end + "SEQNUM=1234" + end;
}

std::string kernelMessage(const std::string& action, const std::string& subsystem) {
    return action + "@/devices/usb1/0003:2E8A:000A.0005/hidraw/hidraw0" + std::string(1, '\0') +
           properties(action, subsystem);
}

void putWord(std::string& message, std::size_t offset, std::uint32_t word) {
    std::memcpy(message.data() + offset, &word, sizeof word);
}

std::string udevMessage(const std::string& action, const std::string& subsystem) {
    std::string head(40, '\x5A');
    head.replace(0, 12, std::string("libudev\0\xFE\xED\xCA\xFE", 12));
    const std::string body = properties(action, subsystem);
    putWord(head, 12, 40);
    putWord(head, 16, 40);
    putWord(head, 20, static_cast<std::uint32_t>(body.size()));
    return head + body;
}

TEST(UeventFromKernel, ArrivalAndRemovalOfAHidrawNodeAreNews) {
    for (const char* action : {"add", "remove", "change", "bind"}) {
        EXPECT_TRUE(isHidNotification(kernelMessage(action, "hidraw"), kernel)) << action;
    }
}

TEST(UeventFromKernel, OtherActionsAreNot) {
    for (const char* action : {"unbind", "move", "online", "offline", "", "ADD", "added"}) {
        EXPECT_FALSE(isHidNotification(kernelMessage(action, "hidraw"), kernel)) << action;
    }
}

TEST(UeventFromKernel, OtherSubsystemsAreNot) {
    for (const char* subsystem : {"hid", "usb", "input", "hidraw2", "", "HIDRAW"}) {
        EXPECT_FALSE(isHidNotification(kernelMessage("add", subsystem), kernel)) << subsystem;
    }
}

TEST(UeventFromKernel, IsTakenWithoutCredentials) {
    EXPECT_TRUE(isHidNotification(kernelMessage("add", "hidraw"), {ueventGroupKernel, 0, std::nullopt}));
}

TEST(UeventFromKernel, FromAProcessIsIgnored) {
    EXPECT_FALSE(isHidNotification(kernelMessage("add", "hidraw"), {ueventGroupKernel, 4711, 0U}));
}

TEST(UeventFromKernel, WithUdevsHeadIsIgnored) {
    EXPECT_FALSE(isHidNotification(udevMessage("add", "hidraw").substr(0, 40), kernel));
}

TEST(UeventFromKernel, ALastPropertyWithoutItsZeroByteCounts) {
    const std::string message =
        "add@/x" + std::string(1, '\0') + "SUBSYSTEM=hidraw" + std::string(1, '\0') + "ACTION=add";
    EXPECT_TRUE(isHidNotification(message, kernel));
}

TEST(UeventFromKernel, PropertiesInItsFirstLineDontCount) {
    const std::string message = "ACTION=add" + std::string(1, '\0') + "SUBSYSTEM=hidraw" + std::string(1, '\0');
    EXPECT_FALSE(isHidNotification(message, kernel));
}

TEST(UeventFromKernel, EmptyPropertiesArePassedOver) {
    const std::string message = "add@/x" + std::string(3, '\0') + properties("add", "hidraw");
    EXPECT_TRUE(isHidNotification(message, kernel));
}

TEST(UeventFromUdev, ArrivalAndRemovalOfAHidrawNodeAreNews) {
    for (const char* action : {"add", "remove", "change", "bind"}) {
        EXPECT_TRUE(isHidNotification(udevMessage(action, "hidraw"), udev)) << action;
    }
}

TEST(UeventFromUdev, OtherSubsystemsAreNot) {
    EXPECT_FALSE(isHidNotification(udevMessage("add", "block"), udev));
}

TEST(UeventFromUdev, FromAnybodyButRootIsIgnored) {
    EXPECT_FALSE(isHidNotification(udevMessage("add", "hidraw"), {ueventGroupUdev, 4711, 1000U}));
    EXPECT_FALSE(isHidNotification(udevMessage("add", "hidraw"), {ueventGroupUdev, 4711, std::nullopt}));
}

TEST(UeventFromUdev, WithoutItsMarkOrMagicNumberIsIgnored) {
    std::string unmarked = udevMessage("add", "hidraw");
    unmarked[0] = 'L';
    EXPECT_FALSE(isHidNotification(unmarked, udev));
    std::string otherMagic = udevMessage("add", "hidraw");
    otherMagic[8] = '\0';
    EXPECT_FALSE(isHidNotification(otherMagic, udev));
    EXPECT_FALSE(isHidNotification(kernelMessage("add", "hidraw"), udev));
}

TEST(UeventFromUdev, PropertiesAreWhereTheHeadSays) {
    std::string message = udevMessage("add", "hidraw");
    message.insert(40, std::string("filler!\0", 8));
    EXPECT_TRUE(isHidNotification(message, udev)) << "the length cuts only the last property";
    putWord(message, 16, 48);
    EXPECT_TRUE(isHidNotification(message, udev));
    putWord(message, 20, 11);
    EXPECT_FALSE(isHidNotification(message, udev)) << "only the action lies within the length";
}

TEST(UeventFromUdev, AHeadThatPointsOutsideIsIgnored) {
    for (const std::uint32_t offset : {0xFFFFFFFFU, 0x80000000U, 1000U}) {
        std::string message = udevMessage("add", "hidraw");
        putWord(message, 16, offset);
        putWord(message, 20, 0xFFFFFFFFU);
        EXPECT_FALSE(isHidNotification(message, udev)) << offset;
    }
}

TEST(Uevent, EveryTruncationIsTakenWithoutHarm) {
    const std::string fromKernel = kernelMessage("add", "hidraw");
    const std::string fromUdev = udevMessage("add", "hidraw");
    for (std::size_t size = 0; size < 40; ++size) {
        EXPECT_FALSE(isHidNotification(std::string(fromKernel, 0, size), kernel)) << size;
        EXPECT_FALSE(isHidNotification(std::string(fromUdev, 0, size), udev)) << size;
    }
}

TEST(Uevent, SentToThisSocketAloneIsIgnored) {
    EXPECT_FALSE(isHidNotification(kernelMessage("add", "hidraw"), {0, 0, 0U}));
    EXPECT_FALSE(isHidNotification(udevMessage("add", "hidraw"), {0, 4711, 0U}));
}

} // namespace
