#pragma once

// Paths are bytes everywhere in the bridge: on Windows in the system's code page, as the configuration and EXE.xml hold
// them. std::filesystem widens such bytes one by one there, so every question to the file system goes through here.

#include <filesystem>
#include <string>

namespace FileSystem {

/// The path of these bytes, converted by the system's code page where the system has one.
std::filesystem::path fromBytes(const std::string& bytes);

/// The bytes of a path; the reverse of `fromBytes`.
std::string toBytes(const std::filesystem::path& path);

/// Whether something exists there. Throws std::filesystem::filesystem_error when the question itself fails.
bool exists(const std::string& path);

/// The same, where any failure counts as absent.
bool existsOrFalse(const std::string& path) noexcept;

/// The folder part; empty for a bare file name.
std::string parentPath(const std::string& path);

/// The last component.
std::string fileName(const std::string& path);

/// `folder` and `name` joined by the system's rule, with no lexical clean-up. An absolute `name` replaces `folder`.
std::string join(const std::string& folder, const std::string& name);

/// Absolute by the system's own notion; on Windows also what begins with a root name and a separator.
bool isAbsolute(const std::string& path);

/// Every backslash turned into the system's own separator: paths as Windows programs write them, for files of theirs
/// that another system holds.
std::string toOwnSeparators(std::string path);

/// Reads a whole file. False, with `text` unchanged, when it can't be opened or read, or is a folder.
bool readFile(const std::string& path, std::string& text);

/// Makes a folder with all its parents. A failure isn't told: it shows when something is put into the folder.
void makeFolders(const std::string& path);

/// Copies a file over whatever file is there. False, with the system's reason in `error`, when that can't be done.
bool copyFile(const std::string& from, const std::string& to, std::string& error);

} // namespace FileSystem
