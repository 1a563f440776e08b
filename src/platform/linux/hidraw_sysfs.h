#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

/// What sysfs knows about the hidraw nodes. A node is identified by its resolved sysfs folder: that holds the instance
/// number of the HID device, which is new at each plug, while the kernel reuses the number of /dev/hidrawN at once.
namespace HidrawSysfs {

/// The folders of all nodes present under `root`, in the order of the node numbers.
std::vector<std::string> nodeFolders(const std::string& root);

/// The path of the folder's device node under `root`, whether or not the node exists.
std::string deviceNode(const std::string& root, const std::string& nodeFolder);

/// Whether the folder is still there and is that of the character device of this number.
bool hasDeviceNumber(const std::string& nodeFolder, dev_t number);

/// The serial number that the HID device gave the kernel; empty when there is none.
std::string serialNumber(const std::string& nodeFolder);

} // namespace HidrawSysfs
