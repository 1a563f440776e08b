#pragma once

#include "platform/file_system.h"

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <system_error>

/// A test's own folder, removed with its content when the test is over.
class TempFolder {
public:
    TempFolder() {
        std::random_device random;
        do {
            folder = std::filesystem::temp_directory_path() / ("bridge-test-" + std::to_string(random()));
        } while (!std::filesystem::create_directory(folder));
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    std::string path() const { return FileSystem::toBytes(folder); }

    /// The path of something in the folder.
    std::string path(const std::string& name) const { return FileSystem::toBytes(folder / name); }

    /// Writes a file, making its folders, and returns its path.
    std::string write(const std::string& name, std::string_view content) const {
        const std::filesystem::path target = folder / name;
        std::filesystem::create_directories(target.parent_path());
        std::ofstream file(target, std::ios::binary | std::ios::trunc);
        file.write(content.data(), static_cast<std::streamsize>(content.size()));
        return FileSystem::toBytes(target);
    }

    std::string makeFolder(const std::string& name) const {
        std::filesystem::create_directories(folder / name);
        return FileSystem::toBytes(folder / name);
    }

private:
    std::filesystem::path folder;
};
