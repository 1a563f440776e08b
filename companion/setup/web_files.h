#pragma once

#include "companion/embedded/embedded_files.h"

/// The setup page's own files, companion/setup/web.
const EmbeddedFiles& setupWebFiles();
