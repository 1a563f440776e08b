#include "hid/usb_ids.h"

#include <cstdio>

bool parseUsbId(const std::string& text, std::uint32_t& id) {
    constexpr unsigned limit = 0x10000;
    unsigned value = 0;
    if (text.empty() || std::sscanf(text.c_str(), "%x", &value) != 1 || value >= limit) {
        return false;
    }
    id = value;
    return true;
}
