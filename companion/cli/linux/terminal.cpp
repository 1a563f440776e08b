#include "companion/cli/terminal.h"

#include <unistd.h>

bool isColourTerminal() {
    return isatty(STDOUT_FILENO) == 1;
}
