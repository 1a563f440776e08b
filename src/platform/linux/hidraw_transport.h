#pragma once

#include "platform/platform.h"

#include <string>

/// HID devices by the kernel's hidraw nodes, of which `root` holds the `sys` and `dev` folders.
HidTransport makeHidrawTransport(const std::string& root);
