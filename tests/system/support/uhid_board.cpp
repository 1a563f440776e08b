#include "tests/system/support/uhid_board.h"

namespace {

// Six reports of 31 bytes behind their ids, as the boards' own descriptor has them.
const std::vector<std::uint8_t> reportDescriptor = {
    0x06, 0x00, 0xFF,                   // usage page: vendor
    0x09, 0x01,                         // usage 1
    0xA1, 0x01,                         // application collection
    0x15, 0x00,                         // values from 0
    0x26, 0xFF, 0x00,                   // to 255
    0x75, 0x08,                         // of 8 bits
    0x95, 0x1F,                         // 31 of them in each report
    0x85, 0x01, 0x09, 0x01, 0x81, 0x02, // input event
    0x85, 0x10, 0x09, 0x10, 0x91, 0x02, // LED control
    0x85, 0x11, 0x09, 0x11, 0x91, 0x02, // sim status
    0x85, 0x12, 0x09, 0x12, 0x91, 0x02, // device control
    0x85, 0x20, 0x09, 0x20, 0xB1, 0x02, // device info
    0x85, 0x21, 0x09, 0x21, 0xB1, 0x02, // protocol info
    0xC0,
};

UhidIdentity identityOf(const VirtualBoardModel& model) {
    UhidIdentity identity;
    identity.vendorId = model.vendorId;
    identity.productId = model.productId;
    identity.serial = model.serial.value_or("");
    identity.name = "Cockpit panel";
    identity.descriptor = reportDescriptor;
    return identity;
}

UhidHandlers handlersOf(VirtualBoard& panel, std::atomic<int>& featureRequests) {
    UhidHandlers handlers;
    handlers.feature = [&](std::uint8_t reportId) -> std::optional<std::vector<std::uint8_t>> {
        ++featureRequests;
        const auto reply = panel.featureReply(reportId);
        if (!reply) {
            return std::nullopt;
        }
        return std::vector<std::uint8_t>(reply->begin(), reply->end());
    };
    handlers.output = [&panel](std::span<const std::uint8_t> report, UhidOutputRoute route) {
        const bool direct = route == UhidOutputRoute::Interrupt;
        panel.receiveOutput(direct ? OutputCall::Write : OutputCall::SetOutputReport, report);
    };
    return handlers;
}

} // namespace

UhidBoard::UhidBoard(const VirtualBoardModel& model) : panel(model) {
    plug();
}

UhidBoard::~UhidBoard() {
    unplug();
}

void UhidBoard::bootFirmware() {
    panel.powerOn([this](std::span<const std::uint8_t> report) {
        if (UhidDevice* device = link) {
            pace([&] { device->sendInput(report); });
        }
    });
}

void UhidBoard::reboot() {
    panel.clearOutputs();
    bootFirmware();
    asked = 0;
}

void UhidBoard::plug() {
    unplug();
    // The firmware has booted before the host asks it anything; it has nobody to send to until the host knows it.
    bootFirmware();
    uhid = std::make_unique<UhidDevice>(identityOf(panel.model()), handlersOf(panel, asked));
    link = uhid.get();
}

void UhidBoard::unplug() {
    panel.powerOff();
    link = nullptr;
    uhid.reset();
}
