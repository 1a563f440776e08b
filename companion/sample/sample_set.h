#pragma once

#include "companion/embedded/embedded_files.h"

/// The files of config.
const EmbeddedFiles& sampleSet();
