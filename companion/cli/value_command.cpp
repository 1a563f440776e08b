#include "companion/cli/value_command.h"

#include "companion/cli/exit_code.h"

#include <CLI/CLI.hpp>

#include <array>
#include <cstdio>
#include <optional>
#include <ostream>
#include <string_view>

namespace {

/// The seven digits that the module delivers, without zeros at the end. std::to_chars would bring 100 KiB of tables.
std::string sevenDigits(float value) {
    std::array<char, 32> text{};
    const int length = std::snprintf(text.data(), text.size(), "%.7g", static_cast<double>(value));
    return {text.data(), static_cast<std::size_t>(length)};
}

} // namespace

ValueCommand::ValueCommand(CLI::App& program, const Platform& platform)
    : platform(platform),
      command(program.add_subcommand("value", "Read a value from the simulator")),
      session(*command, platform) {
    command->add_option("RPN", expression, "A variable with its unit, or any RPN expression that gives a number")
        ->required();
    session.addForceOption(*command);
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
    const std::optional<float> value = session.read(link, expression, error);
    if (!value) {
        err << "vantrel: " << error << '\n';
        return ExitCode::couldNotLook;
    }
    out << sevenDigits(*value) << '\n';
    return ExitCode::good;
}
