#include "companion/cli/terminal.h"

#include <windows.h>

bool isColourTerminal() {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    // Only consoles have a mode. One that can't do escape sequences refuses the new mode.
    return GetConsoleMode(output, &mode) != 0 && SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

bool showsUnicode(const Host& host) {
    // Windows Terminal. The fonts of the older console have few of these characters.
    return host.environmentVariable("WT_SESSION").has_value();
}
