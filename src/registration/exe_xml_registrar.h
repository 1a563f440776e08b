#pragma once

#include "platform/platform.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Adds a program to the files named EXE.xml, by which the simulator starts add-ons, and removes it again. The files
/// belong to the simulator and to other add-ons, so an edit is a text scan that changes no byte unnecessarily:
/// comments, odd formatting, line ends and encoding stay. Texts are bytes, never decoded. There is no state; all of
/// this is meant for one thread of a process that does nothing else.
namespace ExeXmlRegistrar {

// Places.

/// Where each kind of installation has its file, in a fixed order, for the values of LOCALAPPDATA and APPDATA. An empty
/// value leaves out its files.
std::vector<std::string> candidateExeXmlPaths(const std::string& localAppData, const std::string& appData);

/// The candidates of this machine whose folder exists, with the system's own separators. The file itself may be absent.
std::vector<std::string> discoverExeXmlPaths(const Host& host);

// Texts.

/// Escapes ampersand, less-than and greater-than sign. Quotes stay as they are.
std::string escapeXmlText(std::string_view text);

/// Finds the first entry of that name, its whole first and last lines included: `start` is the index of its first byte,
/// `end` is one past its last. Tags and names match in any letter case. False, with both unchanged, when there is
/// none or an entry before it has no end.
bool findAddonBlock(std::string_view text, std::string_view name, std::size_t& start, std::size_t& end);

/// The lines of an entry. An empty command line has no line.
std::string renderAddonEntry(std::string_view name, std::string_view path, std::string_view commandLine);

/// The text with the entry in place of the one of that name, else in front of the line of the document's closing tag,
/// else at the end. A text of white space alone is treated as a new file.
std::string applyRegistration(std::string_view text, std::string_view name, std::string_view path,
                              std::string_view commandLine);

/// The text without the first entry of that name.
std::string removeRegistration(std::string_view text, std::string_view name);

// Files.

/// All bytes of the file; empty when it can't be opened for any reason. False, with the reason in `error` and `text`
/// unchanged, when it opens but its content can't be read.
bool readExeXml(const std::string& path, std::string& text, std::string& error);

/// The same, but such a file is treated as empty too: for looking at a file that won't be written.
std::string readExeXml(const std::string& path);

/// Copies an existing file to its name with ".bak" appended, then writes the text, creating missing folders. A failed
/// copy is a warning in the log. False, with the reason in `error`, when the text can't be written; the file's content
/// is then unknown.
bool writeExeXml(const std::string& path, std::string_view text, std::string& error);

/// Adds the program to every file of this machine and returns how many were written. Stops at the first file that can't
/// be read or written, with the reason in `error`; those before it stay written.
int registerInExeXml(const Host& host, const std::string& name, const std::string& path, const std::string& commandLine,
                     std::string& error);

/// Removes the program from every file of this machine that lists it; the rest as in `registerInExeXml`. A file without
/// the entry isn't written.
int unregisterFromExeXml(const Host& host, const std::string& name, std::string& error);

} // namespace ExeXmlRegistrar
