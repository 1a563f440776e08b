#include "companion/cli/terminal.h"

#include "text/ascii.h"

#include <unistd.h>

bool isColourTerminal() {
    return isatty(STDOUT_FILENO) == 1;
}

bool showsUnicode(const Host& host) {
    // The first of these that has a value decides.
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const std::string locale = upperCased(host.environmentVariable(name).value_or(""));
        if (!locale.empty()) {
            return locale.find("UTF-8") != std::string::npos || locale.find("UTF8") != std::string::npos;
        }
    }
    return false;
}
