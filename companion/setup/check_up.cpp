#include "companion/setup/check_up.h"

#include "companion/doctor/check_result_text.h"
#include "companion/doctor/doctor.h"
#include "companion/draft/file_replacement.h"
#include "platform/file_system.h"

#include <algorithm>
#include <utility>

namespace {

bool carryOutRepair(const Repair& repair, std::string& error) {
    if (repair.code == "write-file") {
        return replaceFiles({{repair.path, repair.text, FileSystem::existsOrFalse(repair.path)}},
                            systemFileOperations(), error);
    }
    FileSystem::makeFolders(repair.path);
    if (!FileSystem::existsOrFalse(repair.path)) {
        error = repair.path + " can't be made. Check the permissions of the folder that it belongs in";
        return false;
    }
    return true;
}

} // namespace

CheckUp::CheckUp(Machine machine, std::string configPath)
    : machine(std::move(machine)), configPath(std::move(configPath)) {}

std::string CheckUp::look() {
    const std::lock_guard lock(mutex);
    return checkResultsJson(examine(machine, configPath));
}

bool CheckUp::repair(const std::string& code, const std::string& title, const Repair& agreed, std::string& error) {
    const std::lock_guard lock(mutex);
    const CheckResults results = examine(machine, configPath);
    const auto offer = std::ranges::find_if(results, [&](const CheckResult& result) {
        return result.code == code && result.title == title && !result.repair.path.empty();
    });
    if (offer == results.end()) {
        error = "This fault is no longer there. Look again";
        return false;
    }
    if (repairInJson(offer->repair) != agreed) {
        error = "The repair is a different one now. Look again";
        return false;
    }
    return carryOutRepair(offer->repair, error);
}
