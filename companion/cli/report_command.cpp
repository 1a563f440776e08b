#include "companion/cli/report_command.h"

#include "companion/cli/chosen_configuration.h"
#include "companion/cli/exit_code.h"
#include "companion/report/report.h"
#include "platform/file_system.h"

#include <CLI/CLI.hpp>

#include <array>
#include <ctime>
#include <ostream>
#include <utility>

namespace {

std::tm timeNow() {
    const std::time_t seconds = std::time(nullptr);
    std::tm parts{};
    // Nothing else in this program converts times.
    if (const std::tm* shared = std::localtime(&seconds)) { // NOLINT(concurrency-mt-unsafe)
        parts = *shared;
    }
    return parts;
}

/// A name of its own for each report.
std::string defaultName(const std::tm& time) {
    std::array<char, 64> name{};
    return {name.data(), std::strftime(name.data(), name.size(), "vantrel-report-%Y%m%d-%H%M%S.zip", &time)};
}

} // namespace

ReportCommand::ReportCommand(CLI::App& program, const Platform& platform, std::string version)
    : platform(platform),
      version(std::move(version)),
      command(program.add_subcommand("report", "Pack what a bug report needs into one zip file")) {
    command->add_option("FILE", path, "The file to write (default: vantrel-report-DATE-TIME.zip in this folder)");
    command->add_option("--config", configPath, "The config.json to take (default: the one that the bridge finds)")
        ->type_name("PATH");
    command->footer(
        "Takes the answer of \"vantrel doctor\", the configuration, the logs and the versions, and replaces user\n"
        "names, home folder and computer name. Sends nothing. Never overwrites a file.\n"
        "Exit code: 0 the file is written, 2 wrong usage or the file exists, 3 it couldn't be written.\n"
        "Examples:\n"
        "  vantrel report\n"
        "  vantrel report fault.zip");
}

int ReportCommand::run(std::ostream& out, std::ostream& err) const {
    const std::tm time = timeNow();
    const std::string target = path.empty() ? defaultName(time) : path;
    if (FileSystem::existsOrFalse(target)) {
        err << "vantrel: " << target << " already exists and isn't overwritten. Give another name.\n";
        return ExitCode::wrongUsage;
    }
    const std::string config = chosenConfigPath(platform.host, configPath);
    const Anonymizer anonymizer(privateNames(platform.host));
    const Report report = collectReport(systemMachine(platform), config, anonymizer, version);
    std::string error;
    if (!writeZip(target, report.files, time, error)) {
        err << "vantrel: " << target << " can't be written: " << error << ". Give a name in another folder.\n";
        return ExitCode::couldNotLook;
    }
    out << reportListing(report) << "Written to " << FileSystem::resolved(target).value_or(target) << '\n';
    return ExitCode::good;
}
