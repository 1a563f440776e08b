#include "app/app_paths.h"
#include "companion/cli/arguments.h"
#include "companion/cli/exit_code.h"
#include "companion/cli/program.h"
#include "companion/cli/utf8_output.h"
#include "companion/report/companion_name.h"
#include "platform/crash_line.h"
#include "platform/platform.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <iterator>

int main(int argc, char** argv) {
    const std::shared_ptr<void> utf8 = showUtf8();
    try {
        const Platform platform = systemPlatform();
        if (WRITES_CRASH_LINE) {
            installCrashLine(crashLinePath(platform.host, false, companionName), companionName, VANTREL_VERSION);
        }
        const std::vector<std::string> arguments = programArguments(argc, argv);
        std::vector<const char*> words;
        std::ranges::transform(arguments, std::back_inserter(words), &std::string::c_str);
        return runVantrel(platform, static_cast<int>(words.size()), words.data(), std::cout, std::cerr);
    } catch (const std::exception& error) {
        std::cerr << "vantrel: " << error.what() << '\n';
        return ExitCode::couldNotLook;
    }
}
