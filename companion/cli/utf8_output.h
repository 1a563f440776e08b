#pragma once

#include <memory>

/// Has this program's standard output and standard error show UTF-8, and on Windows paths of the system's code page,
/// until the result is destroyed. Called before other threads print.
std::shared_ptr<void> showUtf8();
