#include "tests/soak/resources.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

std::size_t countEntries(const char* folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

double residentMiB() {
    std::ifstream file("/proc/self/status");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with("VmRSS:"))
            return std::stod(line.substr(6)) / 1024;
    return 0;
}

} // namespace

Resources currentResources() {
    return {countEntries("/proc/self/task"), countEntries("/proc/self/fd"), residentMiB()};
}
