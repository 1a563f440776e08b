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

/// Whether either sender's message is a notification; the two always agree.
bool isNotification(const std::string& action, const std::string& subsystem) {
    const bool fromUdev = isHidNotification(udevMessage(action, subsystem), udev);
    EXPECT_EQ(isHidNotification(kernelMessage(action, subsystem), kernel), fromUdev) << action << " " << subsystem;
    return fromUdev;
}

TEST(Uevent, NotifiesOfArrivalAndRemovalOfAHidrawNode) {
    for (const char* action : {"add", "remove", "change", "bind"}) {
        EXPECT_TRUE(isNotification(action, "hidraw")) << action;
    }
    for (const char* action : {"unbind", "move", "online", "offline", "", "ADD", "added"}) {
        EXPECT_FALSE(isNotification(action, "hidraw")) << action;
    }
    for (const char* subsystem : {"hid", "usb", "input", "block", "hidraw2", "", "HIDRAW"}) {
        EXPECT_FALSE(isNotification("add", subsystem)) << subsystem;
    }
}

TEST(Uevent, IsIgnoredFromAnybodyButTheKernelAndRootsUdev) {
    struct Case {
        UeventSender sender;
        bool fromKernel;
        bool fromUdev;
    };
    const Case cases[] = {
        {{ueventGroupKernel, 0, 0U}, true, false},
        {{ueventGroupKernel, 0, std::nullopt}, true, false},
        {{ueventGroupKernel, 4711, 0U}, false, false},
        {{ueventGroupUdev, 4711, 0U}, false, true},
        {{ueventGroupUdev, 4711, 1000U}, false, false},
        {{ueventGroupUdev, 4711, std::nullopt}, false, false},
        {{0, 0, 0U}, false, false},
        {{0, 4711, 0U}, false, false},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(isHidNotification(kernelMessage("add", "hidraw"), each.sender), each.fromKernel);
        EXPECT_EQ(isHidNotification(udevMessage("add", "hidraw"), each.sender), each.fromUdev);
    }
}

TEST(Uevent, KernelsPropertiesFollowItsFirstLine) {
    const std::string end(1, '\0');
    EXPECT_TRUE(isHidNotification("add@/x" + end + "SUBSYSTEM=hidraw" + end + "ACTION=add", kernel));
    EXPECT_TRUE(isHidNotification("add@/x" + end + end + end + properties("add", "hidraw"), kernel));
    EXPECT_FALSE(isHidNotification("ACTION=add" + end + "SUBSYSTEM=hidraw" + end, kernel));
}

TEST(UeventFromUdev, WithoutItsMarkOrMagicNumberIsIgnored) {
    for (const std::size_t position : {0U, 8U}) {
        std::string message = udevMessage("add", "hidraw");
        message[position] = 'L';
        EXPECT_FALSE(isHidNotification(message, udev)) << position;
    }
}

TEST(UeventFromUdev, PropertiesAreWhereTheHeadSays) {
    std::string message = udevMessage("add", "hidraw");
    message.insert(40, std::string("filler!\0", 8));
    EXPECT_TRUE(isHidNotification(message, udev)) << "the length cuts only the last property";
    putWord(message, 16, 48);
    EXPECT_TRUE(isHidNotification(message, udev));
    putWord(message, 20, 11);
    EXPECT_FALSE(isHidNotification(message, udev)) << "only the action is within the length";
}

TEST(UeventFromUdev, AHeadThatPointsOutsideIsIgnored) {
    for (const std::uint32_t offset : {0xFFFFFFFFU, 0x80000000U, 1000U}) {
        std::string message = udevMessage("add", "hidraw");
        putWord(message, 16, offset);
        putWord(message, 20, 0xFFFFFFFFU);
        EXPECT_FALSE(isHidNotification(message, udev)) << offset;
    }
}

TEST(Uevent, ATruncatedMessageIsIgnored) {
    const std::string fromKernel = kernelMessage("add", "hidraw");
    const std::string fromUdev = udevMessage("add", "hidraw");
    for (std::size_t size = 0; size < 40; ++size) {
        EXPECT_FALSE(isHidNotification(std::string(fromKernel, 0, size), kernel)) << size;
        EXPECT_FALSE(isHidNotification(std::string(fromUdev, 0, size), udev)) << size;
    }
}

} // namespace
