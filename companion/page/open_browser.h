#pragma once

#include <string>

/// Opens an address in the desktop's browser, if there is a desktop. Returns at once and ignores failures: the program
/// prints the address too.
void openBrowser(const std::string& address);
