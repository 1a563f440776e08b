#include "companion/trial/replay_shortfall.h"

std::string replayShortfall(std::size_t played, std::size_t total, bool interrupted, LinkState end) {
    const std::string progress = std::to_string(played) + " of " + std::to_string(total) + " reports were played";
    if (played < total && interrupted) {
        return "ended before the record's end: " + progress;
    }
    if (end != LinkState::Ready) {
        return "the simulator or its module has gone: " + progress + ", and the last commands may be lost";
    }
    return played < total ? "the simulator or its module was gone for a while: " + progress : "";
}
