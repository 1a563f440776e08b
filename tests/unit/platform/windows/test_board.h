#pragma once

#include "platform/platform.h"
#include "tests/support/windows/board_pipe.h"

/// A board that takes and gives bytes but knows no HID requests.
class TestBoard : public BoardPipe {
public:
    static HidTransport transport() { return systemPlatform().hid; }
};

constexpr std::uint32_t closedHandleError = ERROR_INVALID_HANDLE;
