#include "companion/cli/utf8_output.h"

std::shared_ptr<void> showUtf8() {
    // Terminals show it as it is.
    return nullptr;
}
