#pragma once

#include "companion/check/finding.h"
#include "companion/check/json_document.h"

/// Adds what the bridge accepts in `config.json` but ignores, or hardly reads as it was meant. The root is an object.
void checkConfig(const JsonDocument& document, Findings& findings);
