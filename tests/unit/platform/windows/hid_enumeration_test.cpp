#include "platform/windows/hid_enumeration.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <set>
#include <string>
#include <vector>

namespace {

/// A set of device interfaces whose details can fail.
class DeviceInterfaces : public testing::Test {
protected:
    std::vector<std::string> list() {
        const DeviceInterfaceCalls calls{
            [this](HDEVINFO, SP_DEVINFO_DATA*, const GUID*, DWORD number, SP_DEVICE_INTERFACE_DATA* deviceInterface) {
                deviceInterface->Reserved = number;
                return number < paths.size() ? TRUE : FALSE;
            },
            [this](HDEVINFO, SP_DEVICE_INTERFACE_DATA* deviceInterface, SP_DEVICE_INTERFACE_DETAIL_DATA_A* detail,
                   DWORD size, DWORD* neededSize,
                   SP_DEVINFO_DATA*) { return giveDetail(deviceInterface->Reserved, detail, size, neededSize); }};
        return interfacePaths(nullptr, {}, calls);
    }

    std::vector<std::string> paths{"first", "second", "third"};
    /// Interfaces whose size can't be had, and those that have gone between the two calls.
    std::set<ULONG_PTR> withoutSize;
    std::set<ULONG_PTR> withoutPath;

private:
    BOOL giveDetail(ULONG_PTR number, SP_DEVICE_INTERFACE_DETAIL_DATA_A* detail, DWORD size, DWORD* neededSize) {
        if (detail == nullptr) {
            const auto wholeSize = static_cast<DWORD>(sizeof *detail + paths[number].size());
            *neededSize = withoutSize.contains(number) ? 0 : wholeSize;
            return FALSE; // as the system does when asked for the size alone
        }
        EXPECT_EQ(detail->cbSize, sizeof *detail);
        EXPECT_GE(size, sizeof *detail + paths[number].size());
        char* const devicePath =
            reinterpret_cast<char*>(detail) + offsetof(SP_DEVICE_INTERFACE_DETAIL_DATA_A, DevicePath);
        std::copy_n(paths[number].c_str(), paths[number].size() + 1, devicePath);
        return withoutPath.contains(number) ? FALSE : TRUE;
    }
};

using Paths = std::vector<std::string>;

TEST_F(DeviceInterfaces, AreListedInTheirOrder) {
    EXPECT_EQ(list(), (Paths{"first", "second", "third"}));
    paths.clear();
    EXPECT_EQ(list(), Paths{});
}

TEST_F(DeviceInterfaces, WithoutSizeOrPathAreSkipped) {
    withoutSize = {1};
    EXPECT_EQ(list(), (Paths{"first", "third"}));
    withoutPath = {0};
    EXPECT_EQ(list(), (Paths{"third"}));
    withoutPath = {0, 2};
    EXPECT_EQ(list(), Paths{});
}

} // namespace
