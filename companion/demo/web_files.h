#pragma once

#include "companion/embedded/embedded_files.h"

/// The virtual cockpit's own page, companion/demo/web.
const EmbeddedFiles& demoWebFiles();
