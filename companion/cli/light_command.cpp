#include "companion/cli/light_command.h"

#include "companion/cli/chosen_configuration.h"
#include "companion/cli/exit_code.h"
#include "companion/trial/board_light.h"
#include "mapping/output_state.h"

#include <CLI/CLI.hpp>

#include <ostream>

LightCommand::LightCommand(CLI::App& program, const Platform& platform)
    : platform(platform), command(program.add_subcommand("light", "Show a light on a board")) {
    command->add_option("BOARD", board, "Its identity, name, serial number, or number in \"vantrel boards\"")
        ->required();
    command->add_option("EFFECT", effect, "steady, breathe, flash or off")
        ->required()
        ->check(CLI::IsMember({"steady", "breathe", "flash", "off"}, CLI::ignore_case));
    command->add_option("PERCENT", percent, "Brightness (default: that of the default profile)")
        ->check(CLI::Range(0, 100));
    addConfigOption(*command, configPath);
    command->footer("Writes the report that the bridge would write. A bridge that runs shows its own light again with\n"
                    "its next change.\n"
                    "Exit code: 0 written, 2 wrong usage, 3 no such board, or it can't be written to.\n"
                    "Examples:\n"
                    "  vantrel light 0 steady 80\n"
                    "  vantrel light E66138A1B2C3D4E5 flash");
}

int LightCommand::run(std::ostream& out, std::ostream& err) const {
    AppConfig config;
    std::string error;
    if (!loadAppConfig(chosenConfigPath(platform.host, configPath), config, error)) {
        err << "vantrel: " << error << '\n';
        return ExitCode::couldNotLook;
    }
    const std::vector<ListedBoard> boards = listBoards(platform.hid, &config);
    const ListedBoard* const target = findBoard(boards, board);
    if (target == nullptr) {
        err << "vantrel: there is no board \"" << board << "\"; \"vantrel boards\" lists those that are plugged in\n";
        return ExitCode::couldNotLook;
    }
    if (!showLight(platform.hid, *target, effectCommand(effectNamed(effect, percent).value_or(LedEffect())), error)) {
        err << "vantrel: " << error << '\n';
        return ExitCode::couldNotLook;
    }
    out << "Written to " << boardName(*target) << ". A bridge that runs shows its own light with its next change.\n";
    return ExitCode::good;
}
