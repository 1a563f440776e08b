#pragma once

#include <fstream>
#include <string>

/// Resident memory in MiB of a process, by its number or as "self"; 0 when it is unknown. Linux only.
inline double residentMiB(const std::string& process) {
    std::ifstream file("/proc/" + process + "/status");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("VmRSS:")) {
            return std::stod(line.substr(6)) / 1024;
        }
    }
    return 0;
}
