#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <string>

/// Files that the build embeds in the program: contents by name.
using EmbeddedFiles = std::map<std::string, std::string>;

/// A file as the build embeds it.
struct PackedFile {
    const char* name;
    /// The contents as one gzip member.
    std::span<const unsigned char> packed;
    /// Of the contents, in bytes.
    std::size_t size;
};

/// Throws std::logic_error for a file that isn't what its entry says: the build is broken.
EmbeddedFiles unpack(std::span<const PackedFile> files);
