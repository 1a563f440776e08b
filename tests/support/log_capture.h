#pragma once

#include "logging/logger.h"
#include "platform/file_system.h"
#include "tests/support/temp_folder.h"

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string>
#include <vector>

/// A log file's lines without their time stamps, such as "[WARN] No HID device accepted BOOTSEL command".
inline std::vector<std::string> logLines(const std::string& path) {
    constexpr std::size_t timeLength = 20; // "2024-03-01 14:07:09 "
    std::string text;
    FileSystem::readFile(path, text);
    std::vector<std::string> result;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        result.push_back(line.substr(std::min(line.size(), timeLength)));
    }
    return result;
}

/// Has the process-wide log, debug lines included, written to a folder of the test's own. One at a time.
class LogCapture {
public:
    LogCapture() {
        Logger::instance().configure(folder.path(), "capture", false);
        Logger::instance().setDebugEnabled(true);
    }
    /// Lines that come later go nowhere, as the folder is gone.
    ~LogCapture() {
        Logger::instance().setDebugEnabled(false);
        Logger::instance().close();
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// From now on, each line also goes to std::cout.
    void echo() const { Logger::instance().configure(folder.path(), "capture", true); }

    /// The lines so far, without their time stamps.
    std::vector<std::string> lines() const { return logLines(folder.path("capture.log")); }

    /// The lines that hold `part`.
    std::vector<std::string> linesWith(const std::string& part) const {
        auto result = lines();
        std::erase_if(result, [&](const std::string& line) { return line.find(part) == std::string::npos; });
        return result;
    }

    bool has(const std::string& line) const {
        const auto all = lines();
        return std::find(all.begin(), all.end(), line) != all.end();
    }

    /// From now on, `lines` gives those written after this.
    void clear() {
        Logger::instance().close();
        folder.write("capture.log", "");
    }

private:
    TempFolder folder;
};
