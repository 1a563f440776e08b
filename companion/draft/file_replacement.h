#pragma once

#include <functional>
#include <string>
#include <vector>

/// What replacing files does to them. Each returns the reason for a failure, else an empty text.
struct FileOperations {
    /// Writes a file whole; after a failure its content is unknown.
    std::function<std::string(const std::string& path, const std::string& text)> write;
    std::function<std::string(const std::string& from, const std::string& to)> copy;
    /// Over whatever file is there.
    std::function<std::string(const std::string& from, const std::string& to)> rename;
    /// As `flushToDisk`.
    std::function<std::string(const std::string& path)> flush;
};

FileOperations systemFileOperations();

/// A file and its new text.
struct FileReplacement {
    std::string path;
    std::string text;
    /// There is such a file.
    bool exists = false;
};

/// Replaces all of the files or none, making folders as needed. Each is written whole beside the old one, and is on the
/// disk, before any is replaced, so nobody ever reads half of one, not even after a loss of power; the old one is kept
/// as NAME.bak. Returns when all of that is on the disk. False with the reason in `error`: the files are then as they
/// were.
bool replaceFiles(const std::vector<FileReplacement>& files, const FileOperations& operations, std::string& error);
