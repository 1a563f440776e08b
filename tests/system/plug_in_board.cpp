// A board on the kernel's HID stack until this program is ended. Each SIGUSR1 presses its control 1.
//   plug-in-board VENDOR PRODUCT   both in hexadecimal

#include "tests/system/support/uhid_board.h"

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <string>

namespace {

std::uint16_t hexadecimal(const char* text) {
    return static_cast<std::uint16_t>(std::stoul(text, nullptr, 16));
}

/// Every thread that starts from now on leaves these signals to `sigwait`.
sigset_t blockedSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGUSR1, SIGTERM, SIGINT}) {
        sigaddset(&signals, signal);
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: plug-in-board VENDOR PRODUCT\n", stderr);
        return 2;
    }
    const sigset_t signals = blockedSignals();
    VirtualBoardModel model;
    model.vendorId = hexadecimal(argv[1]);
    model.productId = hexadecimal(argv[2]);
    UhidBoard board(model);
    int signal = 0;
    while (sigwait(&signals, &signal) == 0 && signal == SIGUSR1) {
        board.panel.press(1);
    }
}
