#pragma once

#include "companion/doctor/check_result.h"

#include <string>

/// What the terminal can show.
struct TextStyle {
    bool colour = false;
    /// Marks beyond ASCII.
    bool unicode = false;
};

/// The answers for people, a line and perhaps a remedy each, and a summary.
std::string checkResultsText(const CheckResults& results, TextStyle style);

/// The answers as a JSON array; companion/schemas/doctor.schema.json describes it.
std::string checkResultsJson(const CheckResults& results);

/// The repair as a reader of the JSON gets it: bytes that aren't UTF-8 are replaced.
Repair repairInJson(const Repair& repair);
