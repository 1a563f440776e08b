#include "companion/cli/check_command.h"

#include "companion/check/configuration_check.h"
#include "companion/check/finding_text.h"
#include "companion/cli/chosen_configuration.h"
#include "companion/cli/exit_code.h"
#include "platform/file_system.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <ostream>

CheckCommand::CheckCommand(CLI::App& program, const Host& host)
    : host(host), command(program.add_subcommand("check", "Check the configuration files")) {
    command->add_option("--config", configPath, "The config.json to check (default: the one that the bridge finds)")
        ->type_name("PATH");
    command->add_flag("--json", json, "Print the findings as JSON");
    command->footer("Checks config.json and the two files that it names, and changes nothing.\n"
                    "Exit code: 0 nothing found, 1 errors or warnings, 2 wrong usage, 3 no file to check.\n"
                    "Examples:\n"
                    "  vantrel check\n"
                    "  vantrel check --config panels/config.json --json");
}

int CheckCommand::run(std::ostream& out, std::ostream& err, bool colour) const {
    const std::string path = chosenConfigPath(host, configPath);
    if (!FileSystem::existsOrFalse(path)) {
        err << "vantrel: there is no " << path << '\n';
        return ExitCode::couldNotLook;
    }
    const ConfigurationVerdict verdict = checkConfiguration(path);
    if (json) {
        out << findingsJson(verdict.findings);
    } else {
        for (const Finding& finding : verdict.findings) {
            out << findingText(finding, colour) << '\n';
        }
        out << verdictText(verdict);
    }
    const bool onlyHints = std::ranges::all_of(
        verdict.findings, [](const Finding& finding) { return finding.severity == Severity::Hint; });
    return onlyHints ? ExitCode::good : ExitCode::findings;
}
