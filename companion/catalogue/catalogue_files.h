#pragma once

#include "companion/embedded/embedded_files.h"

/// The data files of this folder.
const EmbeddedFiles& catalogueFiles();
