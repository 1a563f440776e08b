#include "companion/setup/virtual_boards.h"

#include "hid/usb_ids.h"

void VirtualBoards::add() {
    const std::lock_guard lock(mutex);
    ++made;
    const std::string name = "virtual-" + std::to_string(made);
    VirtualBoardModel model;
    model.vendorId = parseUsbId(vendorId).value_or(0);
    model.productId = parseUsbId(productId).value_or(0);
    model.boardId.reset();
    model.serial = name;
    const auto mode = static_cast<std::uint8_t>(made % 2 == 1 ? 0 : 1);
    const Slot slot{std::make_shared<VirtualBoard>(model), mode};
    bus.plug(slot.board);
    slots.emplace(name, slot);
}

VirtualBoards::Slot VirtualBoards::find(const std::string& name) const {
    const std::lock_guard lock(mutex);
    const auto found = slots.find(name);
    return found == slots.end() ? Slot() : found->second;
}

std::optional<LedCommand> VirtualBoards::lightOf(const std::string& name) const {
    const Slot slot = find(name);
    return slot.board == nullptr ? std::nullopt : slot.board->led();
}

bool VirtualBoards::remove(const std::string& name) {
    const Slot slot = find(name);
    if (slot.board == nullptr) {
        return false;
    }
    {
        const std::lock_guard lock(mutex);
        slots.erase(name);
    }
    held.releaseAllOn(*slot.board);
    bus.unplug(slot.board);
    return true;
}

bool VirtualBoards::press(const std::string& name, std::uint16_t control, const std::string& holder,
                          std::string& error) {
    const std::lock_guard lock(mutex);
    const auto found = slots.find(name);
    return found != slots.end() && held.press({found->second.board.get(), control, found->second.mode}, holder, error);
}

bool VirtualBoards::release(const std::string& name, std::uint16_t control) {
    const Slot slot = find(name);
    if (slot.board != nullptr) {
        held.release({slot.board.get(), control, slot.mode});
    }
    return slot.board != nullptr;
}

bool VirtualBoards::turn(const std::string& name, std::uint16_t control, std::int8_t detents, std::uint8_t speed) {
    const Slot slot = find(name);
    if (slot.board != nullptr) {
        slot.board->turn(control, detents, speed, slot.mode);
    }
    return slot.board != nullptr;
}
