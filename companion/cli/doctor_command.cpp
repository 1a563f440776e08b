#include "companion/cli/doctor_command.h"

#include "companion/cli/chosen_configuration.h"
#include "companion/cli/exit_code.h"
#include "companion/doctor/doctor.h"

#include <CLI/CLI.hpp>

#include <ostream>

DoctorCommand::DoctorCommand(CLI::App& program, const Platform& platform)
    : platform(platform), command(program.add_subcommand("doctor", "Look at this machine and name what is wrong")) {
    command->add_option("--config", configPath, "The config.json to use (default: the one that the bridge finds)")
        ->type_name("PATH");
    command->add_flag("--json", json, "Print the answers as JSON");
    command->footer(
        "Looks at the bridge and its configuration, the simulators and the MobiFlight module, the log and the\n"
        "boards. Repairs nothing; each fault comes with what to do.\n"
        "Exit code: 0 all is good, 1 a fault or a warning, 2 wrong usage, 3 the check-up couldn't be made.\n"
        "Examples:\n"
        "  vantrel doctor\n"
        "  vantrel doctor --json");
}

int DoctorCommand::run(std::ostream& out, TextStyle style) const {
    const std::string path = chosenConfigPath(platform.host, configPath);
    const CheckResults results = examine(systemMachine(platform), path);
    out << (json ? checkResultsJson(results) : checkResultsText(results, style));
    return isAllGood(results) ? ExitCode::good : ExitCode::findings;
}
