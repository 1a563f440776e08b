#include "companion/cli/terminal.h"

#include <windows.h>

bool isColourTerminal() {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    // Only consoles have a mode. One that can't do escape sequences refuses the new mode.
    return GetConsoleMode(output, &mode) != 0 && SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

bool showsUnicode(const Host&) {
    return GetConsoleOutputCP() == CP_UTF8;
}
