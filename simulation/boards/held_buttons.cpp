#include "simulation/boards/held_buttons.h"

#include <algorithm>
#include <utility>

HeldButtons::HeldButtons(ReportCallback onReport) : onReport(std::move(onReport)), thread([this] { repeat(); }) {}

HeldButtons::~HeldButtons() {
    releaseAll();
    {
        const std::lock_guard lock(mutex);
        ending = true;
    }
    changed.notify_all();
    thread.join();
}

template <typename Chosen>
void HeldButtons::releaseThose(Chosen chosen) {
    std::erase_if(down, [&](const auto& entry) {
        if (!chosen(entry)) {
            return false;
        }
        sendRelease(entry.first);
        return true;
    });
}

void HeldButtons::addHolder(const std::string& holder) {
    const std::lock_guard lock(mutex);
    holders.insert(holder);
}

void HeldButtons::removeHolder(const std::string& holder) {
    const std::lock_guard lock(mutex);
    if (const auto found = holders.find(holder); found != holders.end()) {
        holders.erase(found);
    }
    releaseThose([&](const auto& entry) { return entry.second.holder == holder; });
}

bool HeldButtons::press(const Button& button, const std::string& holder, std::string& error) {
    {
        const std::lock_guard lock(mutex);
        if (!holder.empty() && !holders.contains(holder)) {
            error = "This page isn't connected, so the button could stay down. Try again when it is";
            return false;
        }
        if (!down.try_emplace(button, Press{holder, Clock::now() + firstHold}).second) {
            return true;
        }
        sendPress(button);
    }
    changed.notify_all();
    return true;
}

void HeldButtons::release(const Button& button) {
    const std::lock_guard lock(mutex);
    if (down.erase(button) > 0) {
        sendRelease(button);
    }
}

void HeldButtons::releaseAll() {
    const std::lock_guard lock(mutex);
    releaseThose([](const auto&) { return true; });
}

void HeldButtons::releaseAllOn(const VirtualBoard& board) {
    const std::lock_guard lock(mutex);
    releaseThose([&](const auto& entry) { return entry.first.board == &board; });
}

std::vector<std::uint16_t> HeldButtons::heldOn(const VirtualBoard& board) const {
    const std::lock_guard lock(mutex);
    std::vector<std::uint16_t> controls;
    for (const auto& [button, next] : down) {
        if (button.board == &board) {
            controls.push_back(button.controlId);
        }
    }
    return controls;
}

void HeldButtons::repeat() {
    std::unique_lock lock(mutex);
    while (!ending) {
        const auto first = std::ranges::min_element(down, {}, [](const auto& entry) { return entry.second.nextHold; });
        if (first == down.end()) {
            changed.wait(lock);
        } else if (const Clock::time_point due = first->second.nextHold; due > Clock::now()) {
            changed.wait_until(lock, due);
        } else {
            first->second.nextHold = due + holdPeriod;
            sendHold(first->first);
        }
    }
}

void HeldButtons::sendPress(const Button& button) const {
    onReport(button, "press");
    button.board->press(button.controlId, button.mode);
}

void HeldButtons::sendHold(const Button& button) const {
    onReport(button, "hold");
    button.board->hold(button.controlId, button.mode);
}

void HeldButtons::sendRelease(const Button& button) const {
    onReport(button, "release");
    button.board->release(button.controlId, button.mode);
}
