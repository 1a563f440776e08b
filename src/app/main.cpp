#include "app/app_paths.h"
#include "app/command_line.h"
#include "app/program.h"
#include "app/program_names.h"
#include "app/standard_outputs.h"
#include "platform/crash_line.h"

#include <cstdlib>

int main(int argc, char** argv) {
    const Platform platform = systemPlatform();
    // A sanitizer reports crashes itself.
    if (WRITES_CRASH_LINE) {
        const bool console = parseCommandLine(argc, argv).console;
        installCrashLine(crashLinePath(platform.host, console, programName), programName, BRIDGE_VERSION);
    }
    const int exitCode = runProgram(platform, argc, argv);
    // The console thread may block in a read of standard input forever. It then holds the stream's lock, for which an
    // ordinary exit on Windows would wait. Nothing else needs a clean-up, so flushing the output is enough.
    flushStandardOutputs();
    std::_Exit(exitCode);
}
