#pragma once

#include "companion/doctor/check_result.h"
#include "companion/doctor/machine.h"

#include <string>

/// What runs at this moment.
struct RunningFacts {
    bool bridge = false;
    /// The simulator's process; empty when none runs.
    std::string simulator;
};

RunningFacts readRunningFacts(const Host& host);

void judgeRunning(const RunningFacts& facts, CheckResults& results);

/// Whether the bridge can write its log.
void checkLogFolder(const Machine& machine, CheckResults& results);
