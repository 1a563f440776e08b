#pragma once

#include "companion/doctor/check_result.h"
#include "companion/doctor/machine.h"

#include <string>

/// Looks at everything that the bridge needs on this machine. Changes nothing but for a test file that it removes.
CheckResults examine(const Machine& machine, const std::string& configPath);
