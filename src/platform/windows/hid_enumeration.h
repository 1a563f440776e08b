#pragma once

#include <string>
#include <vector>

/// The device interface paths of all HID devices present, in the system's order.
std::vector<std::string> enumerateHidPaths();
