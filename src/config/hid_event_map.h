#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

/// Names for the numbers that boards report. Loaded once at start, read without locks afterwards.
struct HidEventMap {
    std::map<std::int32_t, std::string> eventTypes;
    std::map<std::int32_t, std::string> controlIds;

    /// Replaces both maps from the file. False with the message in `error`; after a missing member the maps keep what
    /// the other one gave. Throws as FileSystem::exists does when the file system can't say whether the file exists.
    bool load(const std::string& path, std::string& error);

    /// The same from the file's text.
    bool parse(std::string_view text, std::string& error);
};
