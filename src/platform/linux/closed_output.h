#pragma once

/// Makes writing to a pipe without a reader an ordinary error in the whole process. By default it raises a signal,
/// which ends the program before it can stop in order.
void surviveClosedOutput();
