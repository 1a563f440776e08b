#pragma once

#include <string>

/// Has the desktop open an address in its browser, if there is a desktop. Returns at once; a failure is nobody's loss.
void openBrowser(const std::string& address);
