#include "platform/file_system.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace FileSystem {

bool exists(const std::string& path) {
    return std::filesystem::exists(fromBytes(path));
}

bool existsOrFalse(const std::string& path) noexcept {
    std::error_code failure;
    return std::filesystem::exists(fromBytes(path), failure);
}

std::string parentPath(const std::string& path) {
    return toBytes(fromBytes(path).parent_path());
}

std::string fileName(const std::string& path) {
    return toBytes(fromBytes(path).filename());
}

std::string join(const std::string& folder, const std::string& name) {
    // Asked first, since libstdc++ doesn't know that a server's path is absolute.
    if (isAbsolute(name)) {
        return name;
    }
    return toBytes(fromBytes(folder) / fromBytes(name));
}

std::string toOwnSeparators(std::string path) {
    std::replace(path.begin(), path.end(), '\\', static_cast<char>(std::filesystem::path::preferred_separator));
    return path;
}

std::optional<std::string> resolved(const std::string& path) {
    std::error_code failure;
    const std::filesystem::path target = std::filesystem::canonical(fromBytes(path), failure);
    return failure ? std::nullopt : std::optional(toBytes(target));
}

std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code failure;
    for (std::filesystem::directory_iterator entry(fromBytes(folder), failure), end; !failure && entry != end;
         entry.increment(failure)) {
        names.push_back(toBytes(entry->path().filename()));
    }
    return names;
}

ReadOutcome tryReadFile(const std::string& path, std::string& text) {
    // Linux lets a folder be opened like a file; it only fails to be read.
    std::error_code failure;
    if (std::filesystem::is_directory(fromBytes(path), failure)) {
        return ReadOutcome::NotOpened;
    }
    std::ifstream file(fromBytes(path), std::ios::binary);
    if (!file) {
        return ReadOutcome::NotOpened;
    }
    std::string content;
    std::string chunk(65536, '\0');
    do {
        file.read(chunk.data(), static_cast<std::streamsize>(chunk.size()));
        content.append(chunk, 0, static_cast<std::size_t>(file.gcount()));
    } while (file);
    if (file.bad()) {
        return ReadOutcome::ReadFailed;
    }
    text = std::move(content);
    return ReadOutcome::Read;
}

bool readFile(const std::string& path, std::string& text) {
    return tryReadFile(path, text) == ReadOutcome::Read;
}

std::ofstream openForWriting(const std::string& path) {
    return std::ofstream(fromBytes(path), std::ios::binary | std::ios::trunc);
}

std::ofstream openForAppending(const std::string& path) {
    return std::ofstream(fromBytes(path), std::ios::binary | std::ios::app);
}

void makeFolders(const std::string& path) {
    std::error_code ignored;
    std::filesystem::create_directories(fromBytes(path), ignored);
}

void remove(const std::string& path) {
    std::error_code ignored;
    std::filesystem::remove(fromBytes(path), ignored);
}

} // namespace FileSystem
