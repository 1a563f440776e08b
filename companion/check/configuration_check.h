#pragma once

#include "companion/check/finding.h"

#include <string>
#include <vector>

/// What the three files of a configuration are worth.
struct ConfigurationVerdict {
    /// The files that were read, in the order in which the bridge reads them.
    std::vector<std::string> files;
    Findings findings;
    /// Whether the bridge starts with them.
    bool bridgeStarts = false;
    /// The message with which it refuses to; empty when it starts.
    std::string refusal;
};

/// Judges the configuration whose `config.json` is at `path`. Only reads.
ConfigurationVerdict checkConfiguration(const std::string& path);
