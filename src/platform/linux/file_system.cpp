#include "platform/file_system.h"

#include <system_error>

namespace FileSystem {

std::filesystem::path fromBytes(const std::string& bytes) {
    return bytes;
}

std::string toBytes(const std::filesystem::path& path) {
    return path.native();
}

bool isAbsolute(const std::string& path) {
    return fromBytes(path).is_absolute();
}

bool copyFile(const std::string& from, const std::string& to, std::string& error) {
    std::error_code failure;
    std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing, failure);
    if (failure) {
        error = failure.message();
        return false;
    }
    return true;
}

bool renameFile(const std::string& from, const std::string& to) {
    std::error_code failure;
    std::filesystem::rename(from, to, failure);
    return !failure;
}

std::optional<std::uint64_t> fileSize(const std::string& path) {
    std::error_code failure;
    const std::uintmax_t size = std::filesystem::file_size(path, failure);
    return failure ? std::nullopt : std::optional<std::uint64_t>(size);
}

} // namespace FileSystem
