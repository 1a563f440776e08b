#pragma once

#include <cstddef>
#include <string>
#include <vector>

enum class Severity {
    Error,   ///< The bridge refuses the file.
    Warning, ///< The bridge accepts the file, but does something else than it seems to say.
    Hint,    ///< Nothing is wrong for sure, but it is worth a look.
};

/// "error", "warning" or "hint".
const char* severityName(Severity severity);

/// One remark about a place in a file. Line and column count from 1; a column is a character, not a byte.
struct Finding {
    std::string file;
    std::size_t line = 1;
    std::size_t column = 1;
    Severity severity = Severity::Error;
    /// The kind of finding, such as "unknown-key". Stays the same from version to version.
    std::string code;
    std::string message;
    /// What to do about it; may be empty.
    std::string hint;
    /// The line around the place; empty when there is no such line.
    std::string lineText;
    /// The byte of `lineText` that it is about.
    std::size_t caret = 0;
};

using Findings = std::vector<Finding>;

/// More than anyone reads; a broken file could have millions.
constexpr std::size_t mostFindings = 1000;

/// Completes a place with its texts and adds it, unless there are too many already.
void addFinding(Findings& findings, Finding place, std::string message, std::string hint);

/// Leaves one finding at the place of an error. What was said about the type of the value there becomes its hint, and
/// anything else if it has none.
void mergeIntoErrors(Findings& findings);

/// By file in the given order, then by line and column.
void sortFindings(Findings& findings, const std::vector<std::string>& files);
