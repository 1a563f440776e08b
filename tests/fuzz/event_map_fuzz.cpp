#include "config/hid_event_map.h"
#include "tests/fuzz/fuzz_support.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    HidEventMap map;
    std::string error;
    const bool loaded = map.parse(inputText(data, size), error);
    require(loaded == error.empty(), "a failure has a reason and success has none");
    require(!loaded || (!map.eventTypes.empty() && !map.controlIds.empty()),
            "a map that loads has both kinds of names");
    // A second load of the same text replaces the first one.
    const HidEventMap first = map;
    require(map.parse(inputText(data, size), error) == loaded, "the same text loads again");
    require(map.eventTypes == first.eventTypes && map.controlIds == first.controlIds, "and gives the same maps");
    return 0;
}
