#include "platform/windows/hid_enumeration.h"

namespace {

/// Empty when the interface has gone or doesn't answer.
std::string interfacePath(HDEVINFO devices, SP_DEVICE_INTERFACE_DATA& deviceInterface,
                          const DeviceInterfaceCalls& calls) {
    DWORD size = 0;
    calls.detail(devices, &deviceInterface, nullptr, 0, &size, nullptr);
    if (size == 0) {
        return {};
    }
    std::vector<char> memory(size);
    auto* detail = reinterpret_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_A*>(memory.data());
    // The size of the fixed part alone.
    detail->cbSize = sizeof *detail;
    if (!calls.detail(devices, &deviceInterface, detail, size, nullptr, nullptr)) {
        return {};
    }
    return detail->DevicePath;
}

} // namespace

std::vector<std::string> interfacePaths(HDEVINFO devices, const GUID& interfaceClass,
                                        const DeviceInterfaceCalls& calls) {
    std::vector<std::string> paths;
    SP_DEVICE_INTERFACE_DATA deviceInterface{};
    deviceInterface.cbSize = sizeof deviceInterface;
    for (DWORD number = 0; calls.enumerate(devices, nullptr, &interfaceClass, number, &deviceInterface); ++number) {
        const std::string path = interfacePath(devices, deviceInterface, calls);
        if (!path.empty()) {
            paths.push_back(path);
        }
    }
    return paths;
}

std::vector<std::string> enumerateHidPaths() {
    GUID hidClass{};
    HidD_GetHidGuid(&hidClass);
    const HDEVINFO devices = SetupDiGetClassDevsA(&hidClass, nullptr, nullptr, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
    if (devices == INVALID_HANDLE_VALUE) {
        return {};
    }
    const auto paths =
        interfacePaths(devices, hidClass, {SetupDiEnumDeviceInterfaces, SetupDiGetDeviceInterfaceDetailA});
    SetupDiDestroyDeviceInfoList(devices);
    return paths;
}
