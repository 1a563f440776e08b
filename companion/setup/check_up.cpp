#include "companion/setup/check_up.h"

#include "companion/doctor/check_result_text.h"
#include "companion/doctor/doctor.h"

#include <utility>

CheckUp::CheckUp(const Platform& platform, std::string configPath)
    : platform(platform), configPath(std::move(configPath)) {}

std::string CheckUp::look() {
    const std::lock_guard lock(mutex);
    return checkResultsJson(examine(systemMachine(platform), configPath));
}
