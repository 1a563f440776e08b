#include "companion/cli/exit_code.h"
#include "companion/cli/program.h"
#include "platform/platform.h"

#include <exception>
#include <iostream>

int main(int argc, char** argv) {
    try {
        return runVantrel(systemPlatform(), argc, argv, std::cout, std::cerr);
    } catch (const std::exception& error) {
        std::cerr << "vantrel: " << error.what() << '\n';
        return ExitCode::couldNotLook;
    }
}
