#pragma once

#include "simconnect/simconnect_api.h"

#include <string>

/// "0x" and upper-case hexadecimal digits without padding.
std::string hresultText(SimConnectResult result);

/// Whether a call with this result has failed.
constexpr bool simConnectFailed(SimConnectResult result) {
    return result < 0;
}

/// "`call` failed (0x…)".
std::string simConnectError(const char* call, SimConnectResult result);

/// Whether the call has succeeded; if not, `error` holds its `simConnectError`.
bool callSucceeded(const char* call, SimConnectResult result, std::string& error);
