#include "companion/cli/terminal.h"

bool wantsColour(const Host& host) {
    return host.environmentVariable("NO_COLOR").value_or("").empty() && isColourTerminal();
}
