#include "companion/cli/arguments.h"

std::vector<std::string> programArguments(int argc, const char* const* argv) {
    return {argv, argv + argc};
}
