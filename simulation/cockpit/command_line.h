#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

enum class CockpitMode { Page, Script, Replay, Help };

struct CockpitOptions {
    CockpitMode mode = CockpitMode::Page;
    std::vector<std::string> scripts;
    std::string replayLog;
    /// Empty: the sample set that is built in.
    std::string configPath;
    /// None: the first free one of the usual ports. 0: any free one.
    std::optional<std::uint16_t> port;
    bool fast = false;
    bool openBrowser = true;
    bool realBoards = false;
    bool realSimulator = false;
};

/// False with the reason in `error`; `options` is then half filled.
bool parseCockpitOptions(const std::vector<std::string>& arguments, CockpitOptions& options, std::string& error);

extern const char* const cockpitUsage;
