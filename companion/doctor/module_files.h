#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The member "package_version" of a package's manifest.json; none when the text isn't such a file.
std::optional<std::string> packageVersion(std::string_view manifest);

/// A file of a package.
struct PackageFile {
    /// In the package's folder, with slashes.
    std::string path;
    std::uint64_t size = 0;
};

/// The files that a package's layout.json lists; none when the text isn't such a file.
std::optional<std::vector<PackageFile>> packageFiles(std::string_view layout);

/// Whether a version such as "1.0.1" is older than another. What isn't a number counts as 0.
bool isOlder(const std::string& version, const std::string& than);
