// Lists the tests' HID devices that this system knows, one line for each state, until it is ended: for tests that plug
// boards in from outside.

#include "platform/platform.h"

#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>

namespace {

/// Of all devices, those with the vendor of the tests' boards: Wine has a keyboard and a mouse of its own.
std::string devices(const Platform& platform) {
    std::string paths = "devices:";
    for (const std::string& path : platform.hid.enumerate()) {
        if (path.find("vid_1234") != std::string::npos) {
            paths.append(" ").append(path);
        }
    }
    return paths;
}

void watch(const Platform& platform) {
    for (std::string last;; platform.host.sleepFor(std::chrono::milliseconds(500))) {
        const std::string now = devices(platform);
        if (now != last) {
            std::cout << now << std::endl;
        }
        last = now;
    }
}

} // namespace

int main() {
    const Platform platform = systemPlatform();
    const std::thread watching = platform.host.startThread([&] { watch(platform); });
    // Its window keeps the desktop alive.
    std::string error;
    if (!platform.deviceNotifications.setUp(error)) {
        std::cerr << error << '\n';
        std::_Exit(1);
    }
    platform.deviceNotifications.run([] {});
}
