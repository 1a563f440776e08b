#pragma once

#include "companion/check/configuration_check.h"

#include <string>

/// One finding as editors understand it: "FILE:LINE:COLUMN: error: MESSAGE", then the line with a caret and the hint.
/// Ends with a line break. `colour`: with the terminal's colours.
std::string findingText(const Finding& finding, bool colour);

/// The last line: whether the bridge starts, and how many findings there are.
std::string verdictText(const ConfigurationVerdict& verdict);

/// The findings as a JSON array; schemas/check.schema.json describes it.
std::string findingsJson(const Findings& findings);
