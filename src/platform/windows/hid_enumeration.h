#pragma once

#include "platform/windows/hid_api.h"

#include <setupapi.h>

#include <functional>
#include <string>
#include <vector>

/// The calls that list the device interfaces of a set, as setupapi.h declares them.
struct DeviceInterfaceCalls {
    std::function<decltype(SetupDiEnumDeviceInterfaces)> enumerate;
    std::function<decltype(SetupDiGetDeviceInterfaceDetailA)> detail;
};

/// The paths of a set's interfaces of that class, in the set's order. An interface that gives no detail, for example
/// because it has just been removed, is skipped.
std::vector<std::string> interfacePaths(HDEVINFO devices, const GUID& interfaceClass,
                                        const DeviceInterfaceCalls& calls);

/// The device interface paths of all HID devices present, in the system's order.
std::vector<std::string> enumerateHidPaths();
