#pragma once

#include <string>

/// Returns when what was written to a file, or the names in a folder, would outlast a loss of power, as far as the
/// system can see to that: Windows looks after the names itself. Returns the reason for a failure, else an empty text.
std::string flushToDisk(const std::string& path);
