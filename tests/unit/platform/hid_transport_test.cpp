#include "platform/platform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;

class SystemHidTransport : public testing::Test {
protected:
    /// A handle that isn't open, whether it never was or is closed.
    static constexpr HidHandle noHandle = 12345;

    const HidTransport hid = systemPlatform().hid;
};

TEST_F(SystemHidTransport, EnumeratesWithoutRepeatingAPath) {
    const std::vector<std::string> paths = hid.enumerate();
    for (const std::string& path : paths) {
        EXPECT_EQ(std::count(paths.begin(), paths.end(), path), 1) << path;
    }
}

TEST_F(SystemHidTransport, DoesNotOpenWhatIsNoDevice) {
    for (const HidMode mode : {HidMode::Synchronous, HidMode::Overlapped}) {
        EXPECT_EQ(hid.open("/no/such/device", HidAccess::ReadWrite, mode), invalidHidHandle);
        EXPECT_EQ(hid.open("", HidAccess::ReadOnly, mode), invalidHidHandle);
    }
}

TEST_F(SystemHidTransport, AnswersNothingForAnUnknownHandle) {
    HidAttributes attributes{1, 2};
    std::string serial = "unchanged";
    std::array<std::uint8_t, 32> report{0x20};
    EXPECT_FALSE(hid.attributes(noHandle, attributes));
    EXPECT_EQ(attributes.vendorId, 1);
    EXPECT_EQ(attributes.productId, 2);
    EXPECT_FALSE(hid.serialNumber(noHandle, serial));
    EXPECT_EQ(serial, "unchanged");
    EXPECT_FALSE(hid.getFeature(noHandle, report));
    for (const auto& write : {hid.write, hid.setOutputReport}) {
        const HidWriteResult result = write(noHandle, report);
        EXPECT_FALSE(result.ok);
        EXPECT_EQ(result.count, 0U);
        EXPECT_NE(result.error, 0U);
    }
    EXPECT_EQ(hid.makeReader(noHandle)(1h).status, HidReadStatus::Failure);
    hid.cancelReads(noHandle);
    hid.close(noHandle);
}

} // namespace
