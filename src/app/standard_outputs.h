#pragma once

/// Writes out all that the standard outputs hold back. Standard error holds text back on Windows where it leads to a
/// file or a pipe. Leaves every other stream alone: flushing all of them would wait for a reader of standard input.
void flushStandardOutputs();
