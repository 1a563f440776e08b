#include "sim/hresult_text.h"

#include <array>
#include <cinttypes>
#include <cstdio>

std::string hresultText(SimConnectResult result) {
    std::array<char, 11> text{};
    std::snprintf(text.data(), text.size(), "0x%" PRIX32, static_cast<std::uint32_t>(result));
    return text.data();
}

std::string simConnectError(const char* call, SimConnectResult result) {
    return std::string(call) + " failed (" + hresultText(result) + ")";
}

bool callSucceeded(const char* call, SimConnectResult result, std::string& error) {
    if (!simConnectFailed(result)) {
        return true;
    }
    error = simConnectError(call, result);
    return false;
}
