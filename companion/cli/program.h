#pragma once

#include "platform/platform.h"

#include <iosfwd>

/// Runs `vantrel` with its arguments, the program's own name first, and gives the exit code. Throws what a command
/// throws.
int runVantrel(const Platform& platform, int argc, const char* const* argv, std::ostream& out, std::ostream& err);
