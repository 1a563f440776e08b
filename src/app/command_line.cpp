#include "app/command_line.h"

#include <string_view>

CommandLine parseCommandLine(int argc, const char* const* argv) {
    CommandLine options;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--console") {
            options.console = true;
        } else if (argument == "--hid-trace") {
            options.hidTrace = true;
        } else if (argument == "--list-exe-xml") {
            options.listExeXml = true;
        } else if (argument == "--register") {
            options.registerProgram = true;
        } else if (argument == "--unregister") {
            options.unregisterProgram = true;
        } else if (argument == "--config" && i + 1 < argc) {
            options.configPath = argv[++i];
        }
    }
    return options;
}
