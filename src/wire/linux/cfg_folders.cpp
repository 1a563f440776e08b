#include "wire/cfg_folders.h"

#include <unistd.h>

#include <array>
#include <cstdlib>

namespace {

std::string executableFolder() {
    std::array<char, 4096> path{};
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    const std::string executable(path.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    const std::size_t separator = executable.rfind('/');
    return separator == std::string::npos ? std::string() : executable.substr(0, separator);
}

std::string homeFolder() {
    // Nothing in the program writes the environment.
    const char* home = std::getenv("HOME"); // NOLINT(concurrency-mt-unsafe)
    return home == nullptr ? std::string() : std::string(home);
}

} // namespace

std::vector<std::string> simConnectCfgFolders() {
    return {executableFolder(), homeFolder()};
}
