#pragma once

#include <cstddef>

/// What this process holds, as the kernel counts it.
struct Resources {
    std::size_t threads = 0;
    std::size_t fileDescriptors = 0;
    double residentMiB = 0;
};

Resources currentResources();
