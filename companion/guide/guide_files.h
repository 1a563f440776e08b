#pragma once

#include "companion/embedded/embedded_files.h"

/// The documentation's pages that this program reads.
const EmbeddedFiles& guideFiles();
