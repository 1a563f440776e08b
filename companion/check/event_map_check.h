#pragma once

#include "companion/check/finding.h"
#include "companion/check/json_document.h"

/// Adds what the bridge accepts in `hid_event_map.json` but ignores, or hardly reads as it was meant. The root is an
/// object.
void checkEventMap(const JsonDocument& document, Findings& findings);
