#include "logging/logger.h"

#include "logging/log_line.h"
#include "platform/file_system.h"

#include <chrono>
#include <ctime>
#include <iostream>
#include <optional>

namespace {

constexpr std::uint64_t rotationSizeBytes = 5242880;
constexpr std::int32_t keptBackups = 5;
/// How many numbers after those of the kept backups are looked at when stale ones are deleted.
constexpr std::int32_t staleBackupWindow = 32;

const char* levelWord(Level level) {
    switch (level) {
    case Level::Warn:
        return "WARN";
    case Level::Error:
        return "ERROR";
    case Level::Debug:
        return "DEBUG";
    case Level::Info:
        break;
    }
    return "INFO";
}

std::tm localTime(std::time_t seconds) {
    std::tm parts{};
    // The standard library's only conversion; the logger's mutex keeps its shared buffer to one thread, and nothing
    // else in the process converts times.
    if (const std::tm* shared = std::localtime(&seconds)) { // NOLINT(concurrency-mt-unsafe)
        parts = *shared;
    }
    return parts;
}

std::string timeText() {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    const std::tm parts = localTime(seconds);
    char text[32];
    const std::size_t length = std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &parts);
    return {text, length};
}

} // namespace

Logger& Logger::instance() {
    static Logger logger;
    return logger;
}

void Logger::configure(const std::string& directory, const std::string& baseName, bool consoleEcho) {
    const std::lock_guard lock(mutex);
    this->directory = directory;
    this->baseName = baseName;
    maxBytes = rotationSizeBytes;
    maxBackups = keptBackups;
    this->consoleEcho = consoleEcho;

    const std::string fileName = baseName + ".log";
    if (directory.empty()) {
        filePath = fileName;
    } else {
        FileSystem::makeFolders(directory);
        filePath = FileSystem::join(directory, fileName);
    }
    // Rotation makes one backup too many, which goes here; so do those of a log that once kept more.
    deleteStaleBackups();
    openFile();
}

void Logger::log(Level level, const std::string& message) {
    const std::lock_guard lock(mutex);
    writeLine(level, message);
}

void Logger::debug(const std::string& message) {
    const std::lock_guard lock(mutex);
    if (debugEnabled) {
        writeLine(Level::Debug, message);
    }
}

bool Logger::debugEnabledNow() {
    const std::lock_guard lock(mutex);
    return debugEnabled;
}

void Logger::setDebugEnabled(bool debugEnabled) {
    const std::lock_guard lock(mutex);
    this->debugEnabled = debugEnabled;
}

void Logger::close() {
    const std::lock_guard lock(mutex);
    if (file.is_open()) {
        file.flush();
        file.close();
    }
}

void Logger::openFile() {
    if (file.is_open()) {
        file.close();
    }
    if (filePath.empty()) {
        return;
    }
    file = FileSystem::openForAppending(filePath);
}

void Logger::writeLine(Level level, const std::string& message) {
    if (!file.is_open()) {
        openFile();
    }
    // Before the line and by the size on disk: a line is never split, and a file may grow past the limit by one line.
    rotateIfNeeded();

    std::string line = logLine(timeText(), levelWord(level), message);
    line += '\n';
    if (file.is_open()) {
        // A full disk leaves the stream failed; the next line tries again.
        file.clear();
        file.write(line.data(), static_cast<std::streamsize>(line.size()));
        // Flushed line by line: the last line before a crash is the one that matters.
        file.flush();
    }
    if (consoleEcho) {
        std::cout.write(line.data(), static_cast<std::streamsize>(line.size()));
        std::cout.flush();
    }
}

void Logger::rotateIfNeeded() {
    if (maxBytes == 0 || maxBackups < 1 || filePath.empty()) {
        return;
    }
    const std::optional<std::uint64_t> size = FileSystem::fileSize(filePath);
    if (!size || *size < maxBytes) {
        return;
    }
    if (file.is_open()) {
        file.flush();
        file.close();
    }
    for (std::int32_t number = maxBackups; number >= 1; --number) {
        FileSystem::renameFile(backupPath(number), backupPath(number + 1));
    }
    FileSystem::renameFile(filePath, backupPath(1));
    deleteStaleBackups();
    openFile();
}

void Logger::deleteStaleBackups() {
    if (filePath.empty()) {
        return;
    }
    for (std::int32_t number = maxBackups + 1; number <= maxBackups + staleBackupWindow; ++number) {
        FileSystem::remove(backupPath(number));
    }
}

std::string Logger::backupPath(std::int32_t number) const {
    return filePath + "." + std::to_string(number);
}

void logInfo(const std::string& message) {
    Logger::instance().log(Level::Info, message);
}

void logWarn(const std::string& message) {
    Logger::instance().log(Level::Warn, message);
}

void logError(const std::string& message) {
    Logger::instance().log(Level::Error, message);
}
