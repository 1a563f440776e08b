#include "companion/cli/record_command.h"

#include "companion/cli/chosen_configuration.h"
#include "companion/cli/exit_code.h"
#include "companion/cli/follow_boards.h"
#include "companion/cli/record_file.h"
#include "companion/recording/record_text.h"
#include "platform/file_system.h"
#include "text/wording.h"

#include <CLI/CLI.hpp>

#include <ostream>

RecordCommand::RecordCommand(CLI::App& program, const Platform& platform)
    : platform(platform), command(program.add_subcommand("record", "Write down what the boards send")) {
    command->add_option("FILE", file, "The record, a text")->required();
    addConfigOption(*command, configPath);
    command->add_flag("--force", force, "Replace a file that exists");
    command->footer(
        "Records presses and turns with their times, boards that come and go, and the configuration, until\n"
        "Ctrl+C. The bridge may run meanwhile. \"vantrel replay\" plays the record.\n"
        "Exit code: 0 ended by Ctrl+C, 2 wrong usage or the file exists, 3 no usable configuration, or the\n"
        "file can't be written.\n"
        "Examples:\n"
        "  vantrel record knob.scenario");
}

bool RecordCommand::mayWrite(std::ostream& err) const {
    if (force || !FileSystem::existsOrFalse(file)) {
        return true;
    }
    err << "vantrel: " << file << " exists; --force replaces it\n";
    return false;
}

int RecordCommand::run(std::ostream& out, std::ostream& err) const {
    const auto configuration = chosenConfiguration(platform.host, configPath, err);
    std::string config;
    std::string buttons;
    if (!configuration) {
        return ExitCode::couldNotLook;
    }
    if (!FileSystem::readFile(chosenConfigPath(platform.host, configPath), config) ||
        !FileSystem::readFile(configuration->settings.mappings.buttonConfigPath, buttons)) {
        err << "vantrel: the configuration can't be read; \"vantrel check\" says why\n";
        return ExitCode::couldNotLook;
    }
    if (!mayWrite(err)) {
        return ExitCode::wrongUsage;
    }
    RecordFile record(file);
    std::size_t reports = 0;
    RecordText text(*configuration, platform.host.now());
    record.write(text.header(config, buttons));
    LiveObserver observer;
    observer.arrived = [&](const LiveBoard& board) { record.write(text.arrived(board, platform.host.now())); };
    observer.left = [&](const LiveBoard& board) { record.write(text.left(board, platform.host.now())); };
    observer.reported = [&](const LiveReport& report) {
        record.write(text.reported(report));
        ++reports;
    };
    const int code = followBoards(
        platform, configuration, observer, [&] { record.begin(); }, record.failed(), err);
    if (record.failed()) {
        err << "vantrel: " << record.problem() << '\n';
    } else if (code == ExitCode::good) {
        out << file << ": " << countText(reports, "report") << '\n';
    }
    return code;
}
