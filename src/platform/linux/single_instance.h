#pragma once

#include "platform/platform.h"

/// Takes the lock of that name, which goes with the process. Each user has locks of their own.
SingleInstance takeSingleInstance(const std::string& name);
