#include "companion/page/open_browser.h"

#include "platform/platform.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <thread>

namespace {

bool desktopIsThere() {
    const Host host = systemPlatform().host;
    return host.environmentVariable("DISPLAY") || host.environmentVariable("WAYLAND_DISPLAY");
}

} // namespace

void openBrowser(const std::string& address) {
    if (!desktopIsThere()) {
        return;
    }
    std::string program = "xdg-open";
    std::string argument = address;
    std::array<char*, 3> arguments{program.data(), argument.data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int result = posix_spawnp(&child, program.c_str(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (result == 0) {
        // It may run as long as the browser does.
        std::thread([child] { waitpid(child, nullptr, 0); }).detach();
    }
}
