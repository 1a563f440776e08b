#pragma once

// The HID part of the Windows headers. mingw's lacks the C linkage.

#include <windows.h>

extern "C" {
#include <hidsdi.h>
}
