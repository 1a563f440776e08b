#pragma once

#include "simulation/virtual_board.h"
#include "tests/system/support/uhid_device.h"

#include <atomic>
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

    /// Valid while the board is plugged in.
    const UhidDevice& device() const { return *uhid; }

    /// The path by which the bridge's transport knows it.
    const std::string& path() const { return uhid->sysfsFolder(); }

    /// How many feature reports it was asked for, since it was made.
    int featureRequests() const { return asked; }

    /// The firmware: what its user does, what it was told.
    VirtualBoard panel;

private:
    std::unique_ptr<UhidDevice> uhid;
    std::atomic<int> asked{0};
    /// Null while the host doesn't know the board.
    std::atomic<UhidDevice*> link{nullptr};
};
