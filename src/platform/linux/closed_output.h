#pragma once

/// Makes writing to a pipe that nobody reads any more an error like any other, for the whole process: by default it is
/// a signal that ends the program before it can stop in order.
void surviveClosedOutput();
