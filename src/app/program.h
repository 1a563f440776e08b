#pragma once

#include "platform/platform.h"

/// Runs the whole program on these records: console, command line, configuration path, then either a registration
/// command or single instance and bridge. Returns the process's exit code. Called once, on the main thread. Throws what
/// the file system throws when it can't say whether a file exists.
int runProgram(const Platform& platform, int argc, const char* const* argv);

/// The console control handler: asks the running application to stop. False for an event that isn't handled, and before
/// an application runs in console mode.
bool handleControlEvent(unsigned event);
