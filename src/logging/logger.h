#pragma once

#include <cstdint>
#include <fstream>
#include <mutex>
#include <string>

enum class Level : std::int32_t { Info = 0, Warn = 1, Error = 2, Debug = 3 };

/// The process-wide log: one text file, rotated by size, with an optional echo on standard output. Writing is
/// synchronous, so every line is on disk when `log` returns. Usable from any thread, and before `configure`, when lines
/// go nowhere. No operation reports an error or throws on a file problem.
class Logger {
public:
    static Logger& instance();

    Logger() = default;
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    /// Opens `directory`/`baseName`.log, making the directory. An empty directory means the current one.
    void configure(const std::string& directory, const std::string& baseName, bool consoleEcho);

    /// Writes one line at any level.
    void log(Level level, const std::string& message);

    /// Writes one line at DEBUG if debug lines are enabled.
    void debug(const std::string& message);

    /// Whether `debug` writes. For callers whose message costs something to build.
    bool debugEnabledNow();

    void setDebugEnabled(bool debugEnabled);

    /// Flushes and closes the file; the next line opens it again.
    void close();

private:
    // Innermost lock of the process: nothing that logs is called under it. Guards everything below.
    std::mutex mutex;
    std::ofstream file;
    // What `configure` was given, kept for debugging; `filePath` is made from it once.
    std::string directory;
    std::string baseName;
    std::string filePath;
    std::uint64_t maxBytes = 0;
    std::int32_t maxBackups = 0;
    bool consoleEcho = false;
    bool debugEnabled = false;

    // These need the mutex held.
    void openFile();
    void writeLine(Level level, const std::string& message);
    void rotateIfNeeded();
    void deleteStaleBackups();
    std::string backupPath(std::int32_t number) const;
};

/// The three levels that are always written, by their names.
void logInfo(const std::string& message);
void logWarn(const std::string& message);
void logError(const std::string& message);
