#include "platform/linux/hidraw_sysfs.h"

#include "platform/file_system.h"

#include <sys/sysmacros.h>

#include <algorithm>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>

namespace HidrawSysfs {

namespace {

std::vector<std::string> nodeNames(const std::string& classFolder) {
    std::vector<std::string> names = FileSystem::namesIn(classFolder);
    // hidraw2 before hidraw10.
    std::sort(names.begin(), names.end(), [](const std::string& left, const std::string& right) {
        return left.size() != right.size() ? left.size() < right.size() : left < right;
    });
    return names;
}

} // namespace

std::vector<std::string> nodeFolders(const std::string& root) {
    const std::string classFolder = FileSystem::join(root, "sys/class/hidraw");
    std::vector<std::string> folders;
    for (const std::string& name : nodeNames(classFolder)) {
        // A device that was unplugged meanwhile leaves a dangling link.
        if (std::optional<std::string> folder = FileSystem::resolved(FileSystem::join(classFolder, name))) {
            folders.push_back(std::move(*folder));
        }
    }
    return folders;
}

std::string deviceNode(const std::string& root, const std::string& nodeFolder) {
    return FileSystem::join(FileSystem::join(root, "dev"), FileSystem::fileName(nodeFolder));
}

bool hasDeviceNumber(const std::string& nodeFolder, dev_t number) {
    std::string text;
    return FileSystem::readFile(FileSystem::join(nodeFolder, "dev"), text) &&
           text == std::to_string(major(number)) + ":" + std::to_string(minor(number)) + "\n";
}

std::string serialNumber(const std::string& nodeFolder) {
    std::string text;
    if (!FileSystem::readFile(FileSystem::join(nodeFolder, "device/uevent"), text)) {
        return {};
    }
    constexpr std::string_view key = "HID_UNIQ=";
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(key)) {
            return line.substr(key.size());
        }
    }
    return {};
}

} // namespace HidrawSysfs
