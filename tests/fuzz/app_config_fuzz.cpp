#include "config/app_config.h"

#include "tests/fuzz/fuzz_support.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

void checkLookups(const AppConfig& config) {
    require(resolveProfile(config, nullptr) != nullptr, "a board that is not listed has a profile");
    for (const DeviceEntry& entry : config.outputs.devices) {
        require(!entry.boardId.empty() || entry.index >= 0, "an entry names a board");
        require(resolveProfile(config, &entry) != nullptr, "every entry has a profile");
        require(findDeviceEntry(config, "", entry.index) != nullptr || entry.index < 0, "an index is found");
        // A stored identity that begins with 0X is its own prefix to the lookup.
        const bool isPlain = !entry.boardId.empty() && !entry.boardId.starts_with("0X");
        require(!isPlain || findDeviceEntry(config, entry.boardId, -1) != nullptr, "an identity is found");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    AppConfig config;
    std::string error;
    // A bare file name keeps the search for other files away from the disk.
    if (!parseAppConfig(inputText(data, size), "config.json", config, error)) {
        require(!error.empty(), "a failure has a reason");
        return 0;
    }
    require(error.empty(), "success has no reason");
    require(validateAppConfig(config, error), "what loads is valid");
    checkLookups(config);
    return 0;
}
