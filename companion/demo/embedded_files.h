#pragma once

#include "companion/page/embedded_files.h"

/// The virtual cockpit's own page, companion/demo/web.
const EmbeddedFiles& demoWebFiles();
