#include "platform/file_system.h"

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

} // namespace FileSystem
