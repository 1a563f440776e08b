#include "app/program.h"
#include "app/standard_outputs.h"

#include <cstdlib>

int main(int argc, char** argv) {
    const int exitCode = runProgram(systemPlatform(), argc, argv);
    // The console thread may sit in a read of standard input for good. It then holds the stream's lock, which the
    // tidying up of an ordinary exit waits for on Windows. There is nothing left to tidy up but what was printed.
    flushStandardOutputs();
    std::_Exit(exitCode);
}
