#include "companion/doctor/machine.h"
#include "companion/doctor/system_text.h"

#include <gtest/gtest.h>

TEST(WindowsMachine, KnowsADevicesIdsWithoutOpeningIt) {
    const Machine machine = systemMachine(Platform());
    EXPECT_EQ(machine.idsOfDevice(R"(\\?\HID#VID_1234&PID_ABCD&MI_00#7&1)"), (UsbIds{0x1234, 0xABCD}));
    EXPECT_EQ(machine.idsOfDevice(R"(\\?\hid#vid_1234)"), std::nullopt);
    EXPECT_EQ(machine.idsOfDevice(R"(\\?\hid#vid_12&pid_abcd)"), std::nullopt);
}

TEST(WindowsText, IsInTheSystemsCodePage) {
    // The tests run with code page 1252.
    EXPECT_EQ(bytesFromUtf8("D:\\\xC3\xA4"), "D:\\\xE4");
    EXPECT_EQ(bytesFromUtf8("D:\\a"), "D:\\a");
    EXPECT_EQ(bytesFromUtf8("\xE4"), "");
}
