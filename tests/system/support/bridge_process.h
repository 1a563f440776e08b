#pragma once

#include "tests/support/temp_folder.h"
#include "tests/system/support/child_process.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The texts of configuration files by their names, such as "config.json".
using BridgeFiles = std::map<std::string, std::string>;

/// The bridge as its user has it: the built executable in a folder, with `config/` and SimConnect.cfg beside it.
class BridgeInstallation {
public:
    /// Without a port, the bridge looks for the simulator at its default place.
    BridgeInstallation(const BridgeFiles& files, std::optional<std::uint16_t> simulatorPort);

    std::string path(const std::string& name) const { return folder.path(name); }
    std::string executable() const;

private:
    TempFolder folder;
};

/// One run of an installed bridge.
class BridgeProcess {
public:
    /// `settings` are completed with the program, its folder and its environment.
    BridgeProcess(const BridgeInstallation& installation, const std::vector<std::string>& arguments,
                  ChildProcessSettings settings = {});

    ChildProcess& process() { return *child; }

    /// What it has logged in this run, and what it has written to its two outputs, with plain line ends.
    std::string log() const;
    std::string output() const;
    std::size_t countInLog(std::string_view text) const;

    /// Between two looks into the log: on an emulated machine looking costs as much as what is waited for.
    static constexpr std::chrono::milliseconds logPause{20};

    /// Waits until `text` is in the log that often; false after the limit.
    bool waitForLog(std::string_view text, std::size_t count = 1) const;

private:
    std::string logFile;
    /// Earlier runs' lines end here.
    std::size_t logStart = 0;
    std::unique_ptr<ChildProcess> child;
};

/// How often `part` is in `text`.
std::size_t countOf(std::string_view text, std::string_view part);

/// Puts a copy of a program at `target`, or a second name of it, which other processes take for its own.
void installProgram(const std::string& program, const std::string& target);
