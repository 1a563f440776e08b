// Lists the tests' HID devices that this system knows, one line for each state, until it is ended: for tests that plug
// boards in from outside.

#include "platform/platform.h"

#include <cstdlib>
#include <iostream>
#include <mutex>
#include <string>
#include <thread>

namespace {

class Watch {
public:
    explicit Watch(const Platform& watched) : platform(watched) {}

    /// Prints the list when it differs from the last one printed.
    void look() {
        const std::lock_guard lock(mutex);
        const std::string now = list();
        if (now == last) {
            return;
        }
        last = now;
        std::cout << now << std::endl;
    }

private:
    const Platform& platform;

    // Guards the last list, and keeps the lines in their order.
    std::mutex mutex;
    std::string last;

    std::string list() const {
        std::string paths = "devices:";
        for (const std::string& path : platform.hid.enumerate()) {
            if (isOfTests(path)) {
                paths.append(" ").append(path);
            }
        }
        return paths;
    }

    /// The vendors of the tests' boards. Wine has a keyboard and a mouse of its own, and so may the machine.
    static bool isOfTests(const std::string& path) {
        return path.find("vid_1234") != std::string::npos || path.find("vid_1235") != std::string::npos;
    }
};

} // namespace

int main() {
    const Platform platform = systemPlatform();
    Watch watch(platform);
    // News may come before the device shows up in the list.
    std::thread looking = platform.host.startThread([&] {
        for (;;) {
            watch.look();
            platform.host.sleepFor(std::chrono::milliseconds(500));
        }
    });
    std::string error;
    if (!platform.deviceNotifications.setUp(error)) {
        std::cerr << error << '\n';
        std::_Exit(1);
    }
    platform.deviceNotifications.run([&] { watch.look(); });
}
