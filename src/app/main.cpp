#include "app/program.h"
#include "app/standard_outputs.h"

#include <cstdlib>

int main(int argc, char** argv) {
    const int exitCode = runProgram(systemPlatform(), argc, argv);
    // The console thread may block in a read of standard input forever. It then holds the stream's lock, for which an
    // ordinary exit on Windows would wait. Nothing else needs a clean-up, so flushing the output is enough.
    flushStandardOutputs();
    std::_Exit(exitCode);
}
