#include "companion/doctor/user_cfg.h"

#include "text/ascii.h"

#include <algorithm>

namespace {

constexpr std::string_view packagesKey = "InstalledPackagesPath";

/// The text between the quotes of a line such as `InstalledPackagesPath "D:\MSFS"`.
std::optional<std::string> packagesIn(std::string_view line) {
    if (!line.starts_with(packagesKey)) {
        return std::nullopt;
    }
    const std::string_view value = trimmed(line.substr(packagesKey.size()));
    const std::size_t end = value.find('"', 1);
    if (!value.starts_with('"') || end == std::string_view::npos || end == 1) {
        return std::nullopt;
    }
    return std::string(value.substr(1, end - 1));
}

} // namespace

std::optional<std::string> installedPackagesPath(std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        if (auto packages = packagesIn(trimmed(text.substr(0, end)))) {
            return packages;
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return std::nullopt;
}
