#include "companion/cli/value_command.h"

#include "companion/cli/exit_code.h"

#include <CLI/CLI.hpp>

#include <array>
#include <charconv>
#include <optional>
#include <ostream>
#include <string_view>

namespace {

/// As few digits as say which number it is.
std::string shortestText(float value) {
    std::array<char, 64> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    return {text.data(), end};
}

} // namespace

ValueCommand::ValueCommand(CLI::App& program, const Platform& platform)
    : platform(platform),
      command(program.add_subcommand("value", "Read a value from the simulator")),
      session(*command, platform) {
    command->add_option("RPN", expression, "A variable with its unit, or any RPN expression that gives a number")
        ->required();
    command->footer(
        "Goes through the MobiFlight module, as a client of its own beside the bridge, which may run.\n"
        "The module delivers seven digits. A variable that doesn't exist reads 0.\n"
        "Exit code: 0 printed, 1 something is wrong with the text, 2 wrong usage, 3 no simulator, no module\n"
        "or no answer.\n"
        "Examples:\n"
        "  vantrel value \"(A:LIGHT POTENTIOMETER:3, percent)\"\n"
        "  vantrel value \"(L:LIGHTING_POTENTIOMETER_5)\"");
}

int ValueCommand::run(std::ostream& out, std::ostream& err) const {
    if (!session.accepts(expression, err)) {
        return ExitCode::findings;
    }
    ModuleLink link(platform.simConnect, platform.host);
    std::string error;
    if (!session.connect(link, err)) {
        return ExitCode::couldNotLook;
    }
    const std::optional<float> value = link.read(expression, session.limit(), error);
    if (!value) {
        err << "vantrel: " << error << '\n';
        return ExitCode::couldNotLook;
    }
    out << shortestText(*value) << '\n';
    return ExitCode::good;
}
