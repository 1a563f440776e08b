#pragma once

#include "wire/byte_stream.h"

/// Ends a connection as the crash of its process does: a socket with a reset, even when nothing is unread.
void resetStream(ByteStream& stream);
