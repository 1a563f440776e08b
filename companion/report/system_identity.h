#pragma once

#include <string>

/// This computer's name in its network; empty when the system doesn't give it, or it is no name of its own.
std::string computerName();

/// The system and its version, such as "Linux 6.1.0, Debian GNU/Linux 12 (bookworm)".
std::string systemVersion();
