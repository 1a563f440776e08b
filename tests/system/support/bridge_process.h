#pragma once

#include "tests/support/temp_folder.h"
#include "tests/system/support/child_process.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The texts of the configuration files. An empty text: that file isn't there.
struct BridgeFiles {
    std::string config;
    std::string buttons;
    std::string eventMap;
};

/// The bridge as its user has it: the built executable in a folder, with `config/` and SimConnect.cfg beside it.
class BridgeInstallation {
public:
    /// Without a port the simulator is where it listens when nobody says otherwise.
    BridgeInstallation(const BridgeFiles& files, std::optional<std::uint16_t> simulatorPort);

    std::string path(const std::string& name) const { return folder.path(name); }
    void write(const std::string& name, const std::string& content) const { folder.write(name, content); }
    std::string executable() const;

private:
    TempFolder folder;
};

/// One run of an installed bridge.
class BridgeProcess {
public:
    /// Command, folder and environment of the settings are those of an installed bridge.
    BridgeProcess(const BridgeInstallation& installation, const std::vector<std::string>& arguments,
                  ChildProcessSettings settings = {});

    ChildProcess& process() { return *child; }

    /// Where it logs: beside the executable in console mode, else in the per-machine folder.
    const std::string& logPath() const { return logFile; }

    /// What it has logged in this run, and what it has written to its two outputs; lines end as the tests' own do.
    std::string log() const;
    std::string output() const;
    std::size_t countInLog(std::string_view text) const;

    /// Between two looks into the log: on an emulated machine looking costs as much as what is waited for.
    static constexpr std::chrono::milliseconds logPause{20};

    /// Waits until the log holds `text` that often; false at the limit.
    bool waitForLog(std::string_view text, std::size_t count = 1,
                    std::chrono::milliseconds limit = ChildProcess::defaultLimit) const;

private:
    std::string logFile;
    /// Earlier runs' lines end here.
    std::size_t logStart = 0;
    std::unique_ptr<ChildProcess> child;
};

/// How often `part` stands in `text`.
std::size_t countOf(std::string_view text, std::string_view part);

/// Puts a copy of a program at `target`, or a second name of it, which other processes take for its own.
void installProgram(const std::string& program, const std::string& target);
