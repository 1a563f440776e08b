#pragma once

#include "simulation/boards/virtual_board.h"
#include "tests/system/support/uhid_device.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>

/// A virtual board that the kernel's HID stack carries, in place of a VirtualHidBus. Plugged in from its construction.
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

    /// Starts its firmware anew, as it was made, without the host's noticing.
    void reboot();

    /// Valid while the board is plugged in.
    const UhidDevice& device() const { return *uhid; }

    /// The path by which the bridge's transport knows it.
    const std::string& path() const { return uhid->sysfsFolder(); }

    /// What its input reports are sent through, for a host that doesn't take them as fast as they come. Set before the
    /// board's user does anything.
    using Pace = std::function<void(const std::function<void()>& send)>;
    void setPace(Pace newPace) { pace = std::move(newPace); }
    void setNoPace() { pace = atOnce; }

    /// How many feature reports it was asked for, since it was made.
    int featureRequests() const { return asked; }

    /// The firmware: what its user does, what it was told.
    VirtualBoard panel;

private:
    std::unique_ptr<UhidDevice> uhid;
    std::atomic<int> asked{0};
    static void atOnce(const std::function<void()>& send) { send(); }
    Pace pace = atOnce;
    /// Null while the host doesn't know the board.
    std::atomic<UhidDevice*> link{nullptr};

    void bootFirmware();
};
