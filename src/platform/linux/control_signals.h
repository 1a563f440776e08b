#pragma once

#include "platform/platform.h"

/// Has `handler` called in the signal frame of SIGINT (as 0), SIGTERM (1) and SIGHUP (2). A signal that it doesn't
/// handle ends the process as if there were no handler.
void installControlSignals(ControlHandler handler);
