#include "tests/system/support/uhid_board.h"

UhidBoard::UhidBoard(const VirtualBoardModel& model) : panel(model) {
    plug();
}

UhidBoard::~UhidBoard() {
    unplug();
}

void UhidBoard::bootFirmware() {
    panel.powerOn([this](std::span<const std::uint8_t> report) {
        const UhidDevice* const device = link;
        if (device == nullptr) {
            return;
        }
        const auto send = [&] { device->sendInput(report); };
        if (pace) {
            pace(send);
        } else {
            send();
        }
    });
}

void UhidBoard::reboot() {
    panel.clearOutputs();
    bootFirmware();
}

void UhidBoard::plug() {
    unplug();
    // The firmware has booted before the host asks it anything; it has nobody to send to until the host knows it.
    bootFirmware();
    uhid = std::make_unique<UhidDevice>(panel);
    link = uhid.get();
}

void UhidBoard::unplug() {
    panel.powerOff();
    link = nullptr;
    uhid.reset();
}
