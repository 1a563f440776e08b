#pragma once

#include "platform/platform.h"

/// Ctrl+C and whatever else asks the program to end, for commands that run until then.
namespace Interrupt {

/// From here on, such a request only sets a flag.
void catchRequests(const Host& host);

bool requested();

} // namespace Interrupt
