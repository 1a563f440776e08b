#pragma once

#include <string>

/// A path in UTF-8 as the bytes by which the system names it: on Windows in its code page.
std::string bytesFromUtf8(const std::string& path);
