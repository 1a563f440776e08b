#pragma once

#include <cstdint>
#include <string>

/// Why a client library couldn't be loaded, in words for its user: of the system's error code, and of what the file
/// looks like, since one code has several reasons.
std::string simConnectDllFault(const std::string& fileName, std::uint32_t errorCode);

/// The same for one that was loaded, but has no such function.
std::string simConnectDllLacks(const std::string& fileName, const std::string& function);
