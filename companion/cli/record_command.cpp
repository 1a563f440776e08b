#include "companion/cli/record_command.h"

#include "companion/cli/chosen_configuration.h"
#include "companion/cli/exit_code.h"
#include "companion/cli/follow_boards.h"
#include "companion/recording/record_text.h"
#include "hid/usb_ids.h"
#include "platform/file_system.h"

#include <CLI/CLI.hpp>

#include <atomic>
#include <cerrno>
#include <ostream>
#include <system_error>

namespace {

/// Looked at early, so that a record isn't emptied for a run that can't begin.
bool hasUsbIds(const HidConfig& hid, std::ostream& err) {
    const bool isGood = parseUsbIds(hid.vid, hid.pid).has_value();
    if (!isGood) {
        err << "vantrel: " << invalidUsbIds << ": \"vantrel check\" says where\n";
    }
    return isGood;
}

} // namespace

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

bool RecordCommand::open(std::ofstream& stream, std::ostream& err) const {
    errno = 0;
    stream = FileSystem::openForWriting(file);
    if (!stream.is_open()) {
        err << "vantrel: " << file << " can't be opened: " << std::generic_category().message(errno == 0 ? EIO : errno)
            << '\n';
    }
    return stream.is_open();
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
    std::ofstream stream;
    if (!hasUsbIds(configuration->settings.hid, err) || !open(stream, err)) {
        return ExitCode::couldNotLook;
    }
    std::atomic<bool> failed{false};
    std::size_t reports = 0;
    // Line by line, so that a record that is cut loses nothing.
    const auto write = [&](const std::string& text) { failed = failed || !(stream << text << std::flush); };
    RecordText text(*configuration, platform.host.now());
    write(text.header(config, buttons));
    LiveObserver observer;
    observer.arrived = [&](const LiveBoard& board) { write(text.arrived(board, platform.host.now())); };
    observer.left = [&](const LiveBoard& board) { write(text.left(board, platform.host.now())); };
    observer.reported = [&](const LiveReport& report) {
        write(text.reported(report));
        ++reports;
    };
    const int code = failed ? ExitCode::couldNotLook : followBoards(platform, configuration, observer, failed, err);
    if (failed) {
        err << "vantrel: " << file << " can't be written, or the disk is full; what is in it can be played\n";
    } else if (code == ExitCode::good) {
        out << file << ": " << reports << " reports\n";
    }
    return code;
}
