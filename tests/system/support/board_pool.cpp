#include "tests/system/support/board_pool.h"

#include "tests/system/support/hid_watch.h"
#include "tests/system/support/tested_system.h"

#include <algorithm>
#include <stdexcept>

namespace {

PluggedBoards& kept() {
    static PluggedBoards boards;
    return boards;
}

/// One like the model, or null.
std::unique_ptr<UhidBoard> takeKept(const VirtualBoardModel& model) {
    const auto found =
        std::find_if(kept().begin(), kept().end(), [&](const auto& board) { return board->panel.model() == model; });
    if (found == kept().end()) {
        return nullptr;
    }
    std::unique_ptr<UhidBoard> board = std::move(*found);
    kept().erase(found);
    board->reboot();
    return board;
}

void waitUntilKnown(std::size_t count) {
    if (TestedSystem::isWindows() && !HidWatch::ofThisRun().waitForDevices(count)) {
        throw std::runtime_error("Wine doesn't see " + std::to_string(count) +
                                 " boards but: " + HidWatch::ofThisRun().lastDevices());
    }
}

std::size_t pluggedIn(const PluggedBoards& boards) {
    return static_cast<std::size_t>(
        std::count_if(boards.begin(), boards.end(), [](const auto& board) { return board->pluggedIn(); }));
}

} // namespace

std::unique_ptr<UhidBoard> BoardPool::take(const VirtualBoardModel& model, const PluggedBoards& inUse) {
    if (std::unique_ptr<UhidBoard> board = takeKept(model)) {
        return board;
    }
    auto board = std::make_unique<UhidBoard>(model);
    waitUntilKnown(kept().size() + pluggedIn(inUse) + 1);
    return board;
}

void BoardPool::unplugOthers(const PluggedBoards& inUse) {
    // One after the other: of two that go at once Wine keeps one in its list.
    while (!kept().empty()) {
        kept().pop_back();
        waitUntilKnown(kept().size() + pluggedIn(inUse));
    }
    waitUntilKnown(pluggedIn(inUse));
}

void BoardPool::giveBack(PluggedBoards boards) {
    if (!TestedSystem::isWindows()) {
        return;
    }
    for (std::unique_ptr<UhidBoard>& board : boards) {
        // The pace belongs to the test that is over.
        board->setPace(nullptr);
        if (board->pluggedIn()) {
            kept().push_back(std::move(board));
        }
    }
}
