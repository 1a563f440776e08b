#include "platform/platform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;

/// A handle that is not open, whether it never was or is closed.
constexpr HidHandle noHandle = 12345;

TEST(SystemHidTransport, EnumeratesWithoutRepeatingAPath) {
    const std::vector<std::string> paths = systemPlatform().hid.enumerate();
    for (const std::string& path : paths) {
        EXPECT_EQ(std::count(paths.begin(), paths.end(), path), 1) << path;
    }
}

TEST(SystemHidTransport, OpeningAPathThatIsNoDeviceFails) {
    const HidTransport hid = systemPlatform().hid;
    for (const HidMode mode : {HidMode::Synchronous, HidMode::Overlapped}) {
        EXPECT_EQ(hid.open("/no/such/device", HidAccess::ReadWrite, mode), invalidHidHandle);
        EXPECT_EQ(hid.open("", HidAccess::ReadOnly, mode), invalidHidHandle);
    }
}

TEST(SystemHidTransport, AnUnknownHandleAnswersNothing) {
    const HidTransport hid = systemPlatform().hid;
    HidAttributes attributes{1, 2};
    std::string serial = "unchanged";
    std::array<std::uint8_t, 32> report{0x20};
    EXPECT_FALSE(hid.attributes(noHandle, attributes));
    EXPECT_EQ(attributes.vendorId, 1);
    EXPECT_EQ(attributes.productId, 2);
    EXPECT_FALSE(hid.serialNumber(noHandle, serial));
    EXPECT_EQ(serial, "unchanged");
    EXPECT_FALSE(hid.getFeature(noHandle, report));
    hid.cancelReads(noHandle);
    hid.close(noHandle);
}

TEST(SystemHidTransport, AnUnknownHandleTakesNoReport) {
    const HidTransport hid = systemPlatform().hid;
    const std::array<std::uint8_t, 32> report{0x11};
    for (const auto& write : {hid.write, hid.setOutputReport}) {
        const HidWriteResult result = write(noHandle, report);
        EXPECT_FALSE(result.ok);
        EXPECT_EQ(result.count, 0U);
        EXPECT_NE(result.error, 0U);
    }
}

TEST(SystemHidTransport, AReaderOfAnUnknownHandleFailsAtOnce) {
    const HidTransport hid = systemPlatform().hid;
    const HidReader reader = hid.makeReader(noHandle);
    EXPECT_EQ(reader(1h).status, HidReadStatus::Failure);
}

} // namespace
