#pragma once

#include <ctime>
#include <string>
#include <vector>

/// A file in an archive.
struct ZipEntry {
    /// With slashes.
    std::string name;
    std::string content;
};

/// Writes an archive of these files, all dated `time`, over whatever file is there. False, with the reason in `error`,
/// if that fails; then there is no file.
bool writeZip(const std::string& path, const std::vector<ZipEntry>& entries, const std::tm& time, std::string& error);
