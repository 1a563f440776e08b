#pragma once

#include <string>

/// UTF-8; empty when the conversion fails.
std::string utf8FromWide(const wchar_t* text);
