#pragma once

#include "platform/platform.h"

/// Takes the lock of that name until the process ends. Each user has locks of their own.
SingleInstance takeSingleInstance(const std::string& name);
