#pragma once

#include <atomic>
#include <fstream>
#include <mutex>
#include <string>

/// The file of a record. It is left as it is until `begin`, so that a record that can't begin loses nothing. Any
/// thread.
class RecordFile {
public:
    explicit RecordFile(std::string path);

    /// Empties the file, or makes it, and writes what has come until now.
    void begin();

    /// Each text is on disk at once: a record that is cut loses nothing.
    void write(const std::string& text);

    /// Set once something couldn't be written.
    const std::atomic<bool>& failed() const { return hasFailed; }

    /// What couldn't be done, with the file's name; empty if nothing has failed.
    std::string problem() const;

private:
    const std::string path;
    std::atomic<bool> hasFailed{false};

    // Guards everything below.
    mutable std::mutex mutex;
    std::ofstream stream;
    /// What has come before `begin`.
    std::string early;
    std::string reason;

    void put(const std::string& text);
};
