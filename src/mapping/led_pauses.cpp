#include "mapping/led_pauses.h"

#include <algorithm>

namespace {

std::string deviceKey(const std::string& deviceName, int index) {
    return deviceName.empty() ? "#" + std::to_string(index) : deviceName;
}

} // namespace

void LedPauses::pause(const std::string& deviceName, int index, std::int64_t now) {
    std::int64_t& end = ends[deviceKey(deviceName, index)];
    end = std::max(end, now + pauseNs);
}

bool LedPauses::isPaused(const std::string& deviceName, int index, std::int64_t now) {
    const auto entry = ends.find(deviceKey(deviceName, index));
    if (entry == ends.end()) {
        return false;
    }
    if (now >= entry->second) {
        ends.erase(entry);
        return false;
    }
    return true;
}
