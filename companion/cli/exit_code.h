#pragma once

/// How every command of the program ends.
namespace ExitCode {

constexpr int good = 0;
constexpr int findings = 1;
constexpr int wrongUsage = 2;
constexpr int couldNotLook = 3;

} // namespace ExitCode
