#pragma once

/// Flushes the standard outputs. On Windows, standard error is buffered when it is redirected to a file or a pipe.
/// Touches no other stream: flushing all of them would wait for a reader of standard input.
void flushStandardOutputs();
