#pragma once

#include "companion/doctor/check_result.h"
#include "companion/doctor/machine.h"

#include <string>

/// Whether the system is new enough. Adds nothing when it is.
void checkSystem(const Host& host, CheckResults& results);

/// Looks for the bridge, its configuration, and the mark that Windows attaches to downloaded files.
void checkProgram(const Machine& machine, const std::string& configPath, CheckResults& results);

/// Whether a mark of the web, the text of a file's Zone.Identifier, says that it came from the internet.
bool marksDownload(const std::string& zoneIdentifier);
