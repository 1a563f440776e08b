#pragma once

#include <cstdint>
#include <string>

/// Why a client library couldn't be loaded, in words for its user. Looks at the file too, because one system error code
/// has several causes.
std::string simConnectDllFault(const std::string& fileName, std::uint32_t errorCode);

/// The same for a library that was loaded but lacks a function.
std::string simConnectDllLacks(const std::string& fileName, const std::string& function);
