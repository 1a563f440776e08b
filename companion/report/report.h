#pragma once

#include "companion/doctor/machine.h"
#include "companion/report/anonymizer.h"
#include "companion/report/zip_file.h"

#include <string>
#include <vector>

/// What a report holds, so that a fault can be found without asking the user.
struct Report {
    std::vector<ZipEntry> files;
    /// The identities and serial numbers of boards, which are kept: faults often depend on the board.
    std::vector<std::string> boardNames;
};

/// Collects the check-up's answer, the configuration, the logs and the versions, all without private names. Of a long
/// file only the end is taken. `version`: this program's.
Report collectReport(const Machine& machine, const std::string& configPath, const Anonymizer& anonymizer,
                     const std::string& version);

/// The list of what it holds, for its user to read before sending it.
std::string reportListing(const Report& report);
