#pragma once

#include <cstdint>
#include <optional>
#include <string>

struct WindowsVersion {
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    std::uint32_t build = 0;
};

/// The system's own, whatever a manifest says; none when it can't be had.
std::optional<WindowsVersion> windowsVersion();

/// A line for the log when the bridge isn't made for so old a Windows; empty when it is.
std::string windowsVersionNotice(const WindowsVersion& version);
