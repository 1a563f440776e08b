#pragma once

#include "companion/embedded/embedded_files.h"

/// The files of companion/page/web, which every page may use: colours and type, the connection to the program, small
/// helpers.
const EmbeddedFiles& sharedWebFiles();
