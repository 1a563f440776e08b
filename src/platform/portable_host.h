#pragma once

#include "platform/platform.h"

/// A Host with what the standard library does on every system: environment, sleep, clock and threads. The rest is
/// empty.
Host portableHost();
