#pragma once

#include "companion/page/embedded_files.h"

/// The sample set of config.
const EmbeddedFiles& sampleFiles();

/// The virtual cockpit's own page, companion/demo/web.
const EmbeddedFiles& demoWebFiles();
