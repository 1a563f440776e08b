#include "companion/doctor/machine.h"

#include "platform/file_system.h"
#include "wire/cfg_folders.h"

#include <grp.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace {

/// Reads the hexadecimal number at the end of "00001234" as sysfs writes it.
std::uint16_t hexNumber(std::string_view text) {
    std::uint32_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number, 16);
    return static_cast<std::uint16_t>(number);
}

/// The line "HID_ID=0003:00001234:0000ABCD" of a node's folder, which everybody may read.
std::optional<UsbIds> idsInSysfs(const std::string& nodeFolder) {
    constexpr std::string_view key = "HID_ID=";
    constexpr std::size_t vendorPlace = 5;
    constexpr std::size_t productPlace = 14;
    constexpr std::size_t idSize = 8;
    std::string text;
    FileSystem::readFile(FileSystem::join(nodeFolder, "device/uevent"), text);
    const std::size_t begin = text.find(key);
    if (begin == std::string::npos || text.size() < begin + key.size() + productPlace + idSize) {
        return std::nullopt;
    }
    const std::string_view value = std::string_view(text).substr(begin + key.size());
    return UsbIds{hexNumber(value.substr(vendorPlace, idSize)), hexNumber(value.substr(productPlace, idSize))};
}

/// Whether this process has a group's rights, which it got at the login.
bool isInGroup(const std::string& name) {
    group entry{};
    group* found = nullptr;
    std::array<char, 65536> texts{};
    getgrnam_r(name.c_str(), &entry, texts.data(), texts.size(), &found);
    std::array<gid_t, 1024> groups{};
    const int count = getgroups(static_cast<int>(groups.size()), groups.data());
    return found != nullptr &&
           (getegid() == entry.gr_gid || std::any_of(groups.begin(), groups.begin() + std::max(count, 0),
                                                     [&entry](gid_t member) { return member == entry.gr_gid; }));
}

} // namespace

Machine systemMachine(const Platform& platform) {
    Machine machine;
    machine.host = platform.host;
    machine.hid = platform.hid;
    machine.simConnectCfgFolders = simConnectCfgFolders();
    machine.canWriteInto = canWriteInto;
    machine.idsOfDevice = idsInSysfs;
    machine.udevRuleFolders = {"/etc/udev/rules.d", "/run/udev/rules.d", "/usr/lib/udev/rules.d", "/lib/udev/rules.d"};
    machine.isInGroup = isInGroup;
    return machine;
}
