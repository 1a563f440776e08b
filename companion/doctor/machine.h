#pragma once

#include "hid/usb_ids.h"
#include "platform/platform.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// What the check-up asks of the system. Files are read through FileSystem. What a system doesn't have is left empty,
/// and the checks of it are then left out.
struct Machine {
    Host host;
    HidTransport hid;
    /// Says why the bridge doesn't use SimConnect.dll; an empty text when it does.
    std::function<std::string()> simConnectDllNotice;
    /// Where a SimConnect.cfg can be, the first that counts first.
    std::vector<std::string> simConnectCfgFolders;
    /// The text of the mark that the system attaches to downloaded files.
    std::function<std::optional<std::string>(const std::string& path)> downloadMark;
    /// Whether a file can be made and written in an existing folder.
    std::function<bool(const std::string& folder)> canWriteInto;
    /// The ids of a HID device without opening it.
    std::function<std::optional<UsbIds>(const std::string& path)> idsOfDevice;
    /// Where rules are that give rights to devices, the most important folder first.
    std::vector<std::string> udevRuleFolders;
    /// Whether the user is a member of a group, from the login on.
    std::function<bool(const std::string& group)> isInGroup;
};

/// The machine that this program runs on.
Machine systemMachine(const Platform& platform);

/// Tries it with a file that it removes again.
bool canWriteInto(const std::string& folder);
