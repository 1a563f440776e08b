#include "platform/linux/closed_output.h"

#include <csignal>

void surviveClosedOutput() {
    std::signal(SIGPIPE, SIG_IGN);
}
