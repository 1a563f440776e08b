#pragma once

#include "platform/platform.h"

/// Joins the console of the process that started this one, if it has one. A standard stream that was redirected to a
/// file or a pipe stays as it is; the others lead to that console afterwards.
void attachToParentConsole();

/// Has `handler` called on a thread of the system for each console event, with the system's own numbers.
void installConsoleHandler(ControlHandler handler);
