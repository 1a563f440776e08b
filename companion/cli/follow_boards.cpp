#include "companion/cli/follow_boards.h"

#include "companion/cli/exit_code.h"
#include "companion/devices/board_list.h"
#include "companion/interrupt/interrupt.h"

#include <algorithm>
#include <chrono>
#include <ostream>

namespace {

/// How soon Ctrl+C and the last board's departure are noticed.
constexpr std::chrono::milliseconds look{100};

std::string noBoardText(const HidTransport& transport, const AppConfig& config) {
    const auto closed =
        std::ranges::count_if(listBoards(transport, &config), [](const ListedBoard& board) { return !board.opens; });
    std::string text = "No board with the ids " + config.hid.vid + ':' + config.hid.pid + " is plugged in";
    text += closed == 0 ? "" : ", or you may not open it: \"vantrel boards --all\" lists every device";
    return text + ". Waiting for one.\n";
}

} // namespace

int followBoards(const Platform& platform, const std::shared_ptr<const BridgeConfiguration>& configuration,
                 const LiveObserver& observer, const std::function<void()>& onStarted, const std::atomic<bool>& failed,
                 std::ostream& err) {
    Interrupt::catchRequests(platform.host);
    LiveBoards live(platform.hid, platform.host);
    std::string error;
    if (!live.start(configuration, observer, error)) {
        err << "vantrel: " << error << '\n';
        return ExitCode::couldNotLook;
    }
    onStarted();
    err << "Ctrl+C ends it.\n" << std::flush;
    bool hadBoards = true;
    while (!Interrupt::requested() && !failed) {
        const bool hasBoards = !live.boards().empty();
        if (hadBoards && !hasBoards) {
            err << noBoardText(platform.hid, configuration->settings) << std::flush;
        }
        hadBoards = hasBoards;
        platform.host.sleepFor(look);
    }
    live.stop();
    return failed ? ExitCode::couldNotLook : ExitCode::good;
}
