#include "companion/doctor/machine.h"

#include "platform/file_system.h"
#include "text/ascii.h"
#include "wire/cfg_folders.h"

#include <charconv>
#include <string_view>

namespace {

/// The four hexadecimal digits behind a word such as "vid_".
std::optional<std::uint16_t> idBehind(std::string_view word, const std::string& path) {
    constexpr std::size_t digits = 4;
    const std::size_t begin = path.find(word);
    if (begin == std::string::npos || path.size() < begin + word.size() + digits) {
        return std::nullopt;
    }
    const char* const first = path.data() + begin + word.size();
    std::uint16_t id = 0;
    const auto [end, error] = std::from_chars(first, first + digits, id, 16);
    return end == first + digits ? std::optional(id) : std::nullopt;
}

/// A device's path contains "vid_1234&pid_abcd".
std::optional<UsbIds> idsInPath(const std::string& path) {
    const std::string lower = lowerCased(path);
    const std::optional<std::uint16_t> vendorId = idBehind("vid_", lower);
    const std::optional<std::uint16_t> productId = idBehind("pid_", lower);
    return vendorId && productId ? std::optional(UsbIds{*vendorId, *productId}) : std::nullopt;
}

std::optional<std::string> zoneIdentifier(const std::string& path) {
    std::string text;
    return FileSystem::readFile(path + ":Zone.Identifier", text) ? std::optional(text) : std::nullopt;
}

} // namespace

Machine systemMachine(const Platform& platform) {
    Machine machine;
    machine.host = platform.host;
    machine.hid = platform.hid;
    machine.simConnectDllNotice = platform.simConnect.notice;
    machine.simConnectCfgFolders = simConnectCfgFolders();
    machine.downloadMark = zoneIdentifier;
    machine.canWriteInto = canWriteInto;
    machine.idsOfDevice = idsInPath;
    return machine;
}
