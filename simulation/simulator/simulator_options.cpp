#include "simulation/simulator/simulator_options.h"

#include "simulation/simulator/simulator_controls.h"
#include "text/wording.h"
#include "wire/simconnect_cfg.h"

#include <charconv>

namespace {

std::optional<std::uint16_t> readPort(std::string_view text) {
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(port) : std::nullopt;
}

// An option without a value.
bool readSwitch(std::string_view name, SimulatorOptions& options) {
    options.help = options.help || name == "--help";
    options.keep = options.keep || name == "--keep";
    options.moduleMissing = options.moduleMissing || name == "--module-missing";
    return name == "--help" || name == "--keep" || name == "--module-missing";
}

// An option with its value, which is empty when there is none. Returns the reason for a refusal, else an empty text.
std::string readValue(std::string_view name, std::string_view value, SimulatorOptions& options) {
    if (name == "--port") {
        options.port = readPort(value);
        return options.port ? "" : "--port needs a number from 0 to 65535";
    }
    if (name == "--answers") {
        const std::optional<ModuleAnswers> answers = moduleAnswersOf(value);
        options.answers = answers.value_or(options.answers);
        return answers ? "" : "--answers needs one of " + listText(moduleAnswersWords);
    }
    return "unknown option " + std::string(name);
}

} // namespace

std::optional<SimulatorOptions> readSimulatorOptions(const std::vector<std::string_view>& arguments,
                                                     std::string& error) {
    SimulatorOptions options;
    error.clear();
    for (std::size_t i = 0; i < arguments.size() && error.empty(); ++i) {
        const std::string_view name = arguments[i];
        if (readSwitch(name, options)) {
            continue;
        }
        const bool hasValue = i + 1 < arguments.size() && !arguments[i + 1].starts_with("--");
        const std::string_view value = hasValue ? arguments[++i] : "";
        if (name == "--pipe") {
            options.pipe = hasValue ? value : simConnectPipe;
        } else {
            error = readValue(name, value, options);
        }
    }
    if (error.empty() && options.port && options.pipe) {
        error = "--port and --pipe don't go together";
    }
    return error.empty() ? std::optional(options) : std::nullopt;
}
