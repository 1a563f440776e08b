#pragma once

#include "companion/check/finding.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

/// What the check has found out about the three files of a configuration.
struct ConfigurationVerdict {
    /// The files that were read, in the order in which the bridge reads them.
    std::vector<std::string> files;
    Findings findings;
    /// Whether the bridge starts with them.
    bool bridgeStarts = false;
    /// The message with which it refuses to; empty when it starts.
    std::string refusal;
};

/// Gives the text of a file; none when it can't be read.
using FileTextReader = std::function<std::optional<std::string>(const std::string& path)>;

/// Checks the configuration whose `config.json` is at `path`. Only reads.
ConfigurationVerdict checkConfiguration(const std::string& path);

/// The same with files that may be somewhere else than on disk, such as in an editor.
ConfigurationVerdict checkConfiguration(const std::string& path, const FileTextReader& read);
