#include "companion/page/page_values.h"

#include <chrono>

std::int64_t pageTime() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

std::array<std::pair<const char*, int>, 5> lightMembers(const LedCommand& light) {
    return {{{"effect", light.effect},
             {"brightness", light.brightness},
             {"count", light.count},
             {"periodMs", light.periodMs},
             {"level", light.level}}};
}
