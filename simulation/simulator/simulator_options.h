#pragma once

#include "simulation/simulator/mobiflight_module.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What the program virtual-simulator takes on its command line.
struct SimulatorOptions {
    std::optional<std::uint16_t> port;
    std::optional<std::string> pipe;
    bool moduleMissing = false;
    ModuleAnswers answers = ModuleAnswers::Equal;
    bool keep = false;
    bool help = false;
};

/// None with the reason in `error`, which names the wrong option.
std::optional<SimulatorOptions> readSimulatorOptions(const std::vector<std::string_view>& arguments,
                                                     std::string& error);
