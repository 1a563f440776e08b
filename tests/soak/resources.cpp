#include "tests/soak/resources.h"

#include "tests/support/process_memory.h"

#include <algorithm>
#include <filesystem>

namespace {

std::size_t countEntries(const char* folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

} // namespace

Resources currentResources() {
    return {countEntries("/proc/self/task"), countEntries("/proc/self/fd"), residentMiB("self")};
}
