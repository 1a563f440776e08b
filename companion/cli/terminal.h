#pragma once

#include "platform/platform.h"

/// Whether standard output is a terminal that shows colours. Prepares it for them.
bool isColourTerminal();

/// Whether to print in colours: on a terminal, unless the environment variable NO_COLOR has a value.
bool wantsColour(const Host& host);

/// Whether standard output shows characters beyond ASCII.
bool showsUnicode(const Host& host);
