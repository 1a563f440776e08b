#pragma once

#include <string>
#include <vector>

/// This computer's names in its networks, each as the system has it; none when the system doesn't give them, or they
/// are no names of its own.
std::vector<std::string> computerNames();

/// The system and its version, such as "Linux 6.1.0, Debian GNU/Linux 12 (bookworm)".
std::string systemVersion();
