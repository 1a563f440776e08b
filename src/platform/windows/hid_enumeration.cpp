#include "platform/windows/hid_enumeration.h"

#include "platform/windows/hid_api.h"

#include <setupapi.h>

namespace {

/// Empty when the interface has gone or won't tell.
std::string interfacePath(HDEVINFO devices, SP_DEVICE_INTERFACE_DATA& deviceInterface) {
    DWORD size = 0;
    SetupDiGetDeviceInterfaceDetailA(devices, &deviceInterface, nullptr, 0, &size, nullptr);
    if (size == 0) {
        return {};
    }
    std::vector<char> memory(size);
    auto* detail = reinterpret_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_A*>(memory.data());
    // The size of the fixed part, whatever stands behind it.
    detail->cbSize = sizeof *detail;
    if (!SetupDiGetDeviceInterfaceDetailA(devices, &deviceInterface, detail, size, nullptr, nullptr)) {
        return {};
    }
    return detail->DevicePath;
}

} // namespace

std::vector<std::string> enumerateHidPaths() {
    GUID hidClass{};
    HidD_GetHidGuid(&hidClass);
    const HDEVINFO devices = SetupDiGetClassDevsA(&hidClass, nullptr, nullptr, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
    if (devices == INVALID_HANDLE_VALUE) {
        return {};
    }
    std::vector<std::string> paths;
    SP_DEVICE_INTERFACE_DATA deviceInterface{};
    deviceInterface.cbSize = sizeof deviceInterface;
    for (DWORD number = 0; SetupDiEnumDeviceInterfaces(devices, nullptr, &hidClass, number, &deviceInterface);
         ++number) {
        const std::string path = interfacePath(devices, deviceInterface);
        if (!path.empty()) {
            paths.push_back(path);
        }
    }
    SetupDiDestroyDeviceInfoList(devices);
    return paths;
}
