#pragma once

#include <cstddef>

/// The length of every report between boards and host, the report id included. The system must know it before it reads,
/// so the constant is here and not in the report protocol.
constexpr std::size_t hidReportSize = 32;
