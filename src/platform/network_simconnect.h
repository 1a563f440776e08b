#pragma once

#include "platform/platform.h"

/// The client library that is built into the program.
SimConnectLibrary networkSimConnectLibrary();
