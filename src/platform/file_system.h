#pragma once

// Paths are bytes everywhere in the bridge: on Windows in the system's code page, as the configuration and EXE.xml hold
// them. std::filesystem widens such bytes one by one there, and answers some questions about an open file from a
// directory entry that is out of date, so every question to the file system goes through here.

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace FileSystem {

/// The path of these bytes, converted by the system's code page where the system has one.
std::filesystem::path fromBytes(const std::string& bytes);

/// The bytes of a path; the reverse of `fromBytes`.
std::string toBytes(const std::filesystem::path& path);

/// Whether something exists there. Throws std::filesystem::filesystem_error when the question itself fails.
bool exists(const std::string& path);

/// The same, but any failure means absent.
bool existsOrFalse(const std::string& path) noexcept;

/// The folder part; empty for a bare file name.
std::string parentPath(const std::string& path);

/// The last component.
std::string fileName(const std::string& path);

/// `folder` and `name` joined by the system's rule, with no lexical clean-up. An absolute `name` replaces `folder`.
std::string join(const std::string& folder, const std::string& name);

/// Absolute by the system's own notion; on Windows also what begins with a root name and a separator.
bool isAbsolute(const std::string& path);

/// Every backslash turned into the system's own separator, for paths that Windows programs wrote and that are used on
/// another system.
std::string toOwnSeparators(std::string path);

/// The path with every link followed and no dot parts; none when nothing is there.
std::optional<std::string> resolved(const std::string& path);

/// The names of all that is in a folder, in no particular order; none when it can't be read.
std::vector<std::string> namesIn(const std::string& folder);

/// How many bytes a file has on disk now, also while it is open for writing here or elsewhere. None when that can't be
/// had, and for a folder.
std::optional<std::uint64_t> fileSize(const std::string& path);

enum class ReadOutcome {
    Read,
    /// Absent, a folder, or not accessible.
    NotOpened,
    /// Opened, but its content couldn't be read, or not all of it.
    ReadFailed
};

/// Reads a whole file. `text` is unchanged unless the outcome is Read.
ReadOutcome tryReadFile(const std::string& path, std::string& text);

/// The same, for callers that treat every failure alike.
bool readFile(const std::string& path, std::string& text);

/// A stream that empties the file, or creates it; not open when that can't be done.
std::ofstream openForWriting(const std::string& path);

/// A stream that writes at the file's end, creating the file if need be; not open when that can't be done.
std::ofstream openForAppending(const std::string& path);

/// Makes a folder with all its parents. Reports no failure: putting something into the folder will fail then.
void makeFolders(const std::string& path);

/// Copies a file over whatever file is there. False, with the system's reason in `error`, when that can't be done.
bool copyFile(const std::string& from, const std::string& to, std::string& error);

/// Renames a file within its volume, over whatever file is there. False when that can't be done.
bool renameFile(const std::string& from, const std::string& to);

/// Deletes a file, or a folder with nothing in it. A failure isn't reported.
void remove(const std::string& path);

} // namespace FileSystem
