#pragma once

#include "simulation/boards/virtual_board.h"
#include "tests/system/support/uhid_device.h"

#include <atomic>
#include <functional>
#include <memory>

/// A virtual board on the kernel's HID stack instead of a VirtualHidBus. Plugged in from its construction.
class UhidBoard {
public:
    explicit UhidBoard(const VirtualBoardModel& model = {});
    ~UhidBoard();
    UhidBoard(const UhidBoard&) = delete;
    UhidBoard& operator=(const UhidBoard&) = delete;

    /// Each plugging is a new device to the kernel.
    void plug();
    void unplug();
    bool pluggedIn() const { return uhid != nullptr; }

    /// Restarts its firmware without the host's noticing.
    void reboot();

    /// Valid while the board is plugged in.
    const UhidDevice& device() const { return *uhid; }

    /// Sends its input reports, for a host that doesn't take them as fast as they come; null sends them at once. Set
    /// before the board's user does anything.
    using Pace = std::function<void(const std::function<void()>& send)>;
    void setPace(Pace pace) { this->pace = std::move(pace); }

    /// The firmware: what its user does, what it received.
    VirtualBoard panel;

private:
    std::unique_ptr<UhidDevice> uhid;
    Pace pace;
    /// Null while the host doesn't know the board.
    std::atomic<const UhidDevice*> link{nullptr};

    void bootFirmware();
};
