#pragma once

#include "platform/platform.h"

/// A HID transport with one board, 1234:ABCD, whose input reports come as packets of a Unix socket: what a hidraw node
/// is to the real transport, but driven from another process without a kernel module.
HidTransport socketBoardTransport(int reportSocket);
