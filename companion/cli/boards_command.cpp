#include "companion/cli/boards_command.h"

#include "companion/cli/chosen_configuration.h"
#include "companion/cli/exit_code.h"
#include "companion/devices/board_list.h"
#include "config/app_config.h"
#include "hid/usb_ids.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <ostream>

namespace {

bool hasUsbIds(const HidConfig& hid, std::string& error) {
    error = invalidUsbIds;
    return parseUsbIds(hid.vid, hid.pid).has_value();
}

} // namespace

BoardsCommand::BoardsCommand(CLI::App& program, const Platform& platform)
    : platform(platform), command(program.add_subcommand("boards", "List the boards")) {
    command
        ->add_option("--config", configPath,
                     "The config.json with the boards' ids (default: the one that the bridge finds)")
        ->type_name("PATH");
    command->add_flag("--all", all, "List every HID device, to find a board's vendor and product id");
    command->add_flag("--json", json, "Print the list as JSON");
    command->footer(
        "Boards may be in use by the bridge meanwhile. Only devices with the ids of the configuration are asked\n"
        "for their identity.\n"
        "Exit code: 0 a board was found, 1 none, 2 wrong usage, 3 no usable configuration.\n"
        "Examples:\n"
        "  vantrel boards\n"
        "  vantrel boards --all");
}

int BoardsCommand::run(std::ostream& out, std::ostream& err) const {
    AppConfig config;
    std::string error;
    const std::string path = chosenConfigPath(platform.host, configPath);
    const bool isConfigured = loadAppConfig(path, config, error) && hasUsbIds(config.hid, error);
    if (!isConfigured) {
        err << "vantrel: " << error << '\n';
        if (!all) {
            err << "\"vantrel boards --all\" lists every device without a configuration.\n";
            return ExitCode::couldNotLook;
        }
    }
    std::vector<ListedBoard> boards = listBoards(platform.hid, isConfigured ? &config : nullptr);
    const bool found = std::ranges::any_of(boards, &ListedBoard::matches);
    if (!all) {
        std::erase_if(boards, [](const ListedBoard& board) { return !board.matches; });
    }
    out << (json ? boardsJson(boards) : boardsText(boards));
    if (!json && !found && isConfigured) {
        out << (all ? "None of these devices has the ids of the configuration.\n"
                    : "No board of this configuration is plugged in, or none that you may open. --all lists every "
                      "device.\n");
    }
    return found || (all && !boards.empty()) ? ExitCode::good : ExitCode::findings;
}
