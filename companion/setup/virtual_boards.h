#pragma once

#include "simulation/boards/held_buttons.h"
#include "simulation/boards/virtual_hid_bus.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

/// Boards for trying things out without hardware, on a bus of their own. They are known by their names, as the bridge
/// would log them. Any thread.
class VirtualBoards {
public:
    /// What HidConfig needs to find these boards, and only them.
    static constexpr const char* vendorId = "1234";
    static constexpr const char* productId = "ABCD";

    /// The bus keeps no record of its calls, of which a page that stays open makes any number.
    VirtualBoards() { bus.setRecording(false); }

    HidTransport transport() const { return bus.transport(); }

    /// Makes a board and plugs it in. Every second one is an MFD.
    void add();
    /// Pulls a board; false if there is none of that name.
    bool remove(const std::string& name);
    /// What a board's light shows; none for a board that has received nothing, or that isn't there.
    std::optional<LedCommand> lightOf(const std::string& name) const;

    // Who may press controls. Removing a holder releases what it holds down.
    void addHolder(const std::string& holder) { held.addHolder(holder); }
    void removeHolder(const std::string& holder) { held.removeHolder(holder); }

    // What its user does. False if there is no board of that name.
    /// The control then reports that it is held down, until its release. Also false, with the reason in `error`, if the
    /// holder isn't there.
    bool press(const std::string& name, std::uint16_t control, const std::string& holder, std::string& error);
    bool release(const std::string& name, std::uint16_t control);
    bool turn(const std::string& name, std::uint16_t control, std::int8_t detents, std::uint8_t speed);

private:
    struct Slot {
        std::shared_ptr<VirtualBoard> board;
        std::uint8_t mode = 0;
    };

    VirtualHidBus bus;
    // Guards the slots and their number. Held while a button is pressed, so that its board is there.
    mutable std::mutex mutex;
    std::map<std::string, Slot> slots;
    int made = 0;
    HeldButtons held{[](const HeldButtons::Button&, std::string_view) {}};

    Slot find(const std::string& name) const;
};
