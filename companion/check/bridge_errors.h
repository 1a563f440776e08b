#pragma once

#include "companion/check/finding.h"
#include "companion/check/json_document.h"

#include <functional>
#include <string>

/// How the bridge reads one kind of file: false with the message that it would log.
using BridgeReader = std::function<bool(const std::string& text, std::string& error)>;

/// Every error for which the bridge would refuse the file, in its own words. The bridge stops at the first; so each
/// error is repaired in a copy, and the bridge's own reader looks again. Empty exactly if the bridge accepts the file.
/// `accepted` then holds the repaired text if the bridge accepts that. Of a very large file only the first errors are
/// found.
Findings bridgeErrors(const JsonDocument& document, const BridgeReader& reader, std::string& accepted);
