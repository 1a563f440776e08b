#pragma once

#include "platform/file_system.h"
#include "tests/support/temp_folder.h"
#include "tests/support/wait_until.h"
#include "tests/windows/child_process.h"

#include <windows.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <system_error>

/// The executable that was built with these tests.
inline std::string builtExecutable() {
    std::array<char, MAX_PATH> own{};
    GetModuleFileNameA(nullptr, own.data(), MAX_PATH);
    const std::string folder = FileSystem::parentPath(FileSystem::parentPath(own.data()));
    return FileSystem::join(folder, "VantrelBridgeHID.exe");
}

/// A configuration that loads, of a bridge that stops without waiting out a long pause between its scans.
constexpr const char* shortConfig =
    R"({"hid":{"vid":"1234","pid":"ABCD","scanIntervalMs":20},"mappings":{"buttonConfigPath":"buttons.json"}})";

/// The bridge, copied into a folder of its own as its user does it, with or without a configuration beside it. Any byte
/// of the system's code page may stand in the folder's name.
class InstalledBridge {
public:
    explicit InstalledBridge(const std::string& folderName = "bridge")
        : folder(FileSystem::join(parent.path(), folderName)), executable(path("VantrelBridgeHID.exe")) {
        std::filesystem::create_directories(FileSystem::fromBytes(folder));
        CopyFileA(builtExecutable().c_str(), executable.c_str(), FALSE);
    }

    /// Writes that configuration to `config/config.json` beside the executable.
    void configure() const {
        write("config/config.json", shortConfig);
        write("config/buttons.json", R"({"buttons":[]})");
    }

    std::string path(const std::string& name) const { return FileSystem::join(folder, name); }

    std::string write(const std::string& name, const std::string& content) const {
        const std::filesystem::path target = FileSystem::fromBytes(path(name));
        std::filesystem::create_directories(target.parent_path());
        std::ofstream(target, std::ios::binary | std::ios::trunc) << content;
        return path(name);
    }

    /// With no console but the one that it attaches to itself: a windowed program gets none from Windows, but it does
    /// from Wine.
    std::unique_ptr<ChildProcess> start(const std::string& arguments, const Streams& streams = {}) const {
        const std::string commandLine = '"' + executable + "\" " + arguments;
        return std::make_unique<ChildProcess>(commandLine, streams, DETACHED_PROCESS, folder);
    }

    bool has(const std::string& name) const { return FileSystem::exists(path(name)); }

    /// A file beside the executable for a process to write into. The caller closes it.
    HANDLE createFile(const std::string& name) const {
        return CreateFileA(path(name).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr);
    }

    /// Empty when there is no such file.
    std::string contentOf(const std::string& name) const {
        std::string text;
        FileSystem::readFile(path(name), text);
        return text;
    }

    /// The log beside the executable; empty when there is none.
    std::string log() const { return contentOf("VantrelBridgeHID.log"); }

    bool hasLogged(const std::string& part) const { return log().find(part) != std::string::npos; }
    bool waitForLog(const std::string& part) const {
        return waitUntil([&] { return hasLogged(part); }, std::chrono::seconds(60));
    }

private:
    const TempFolder parent;

public:
    const std::string folder;
    const std::string executable;
};

/// Log lines by which a test knows how far the bridge is.
constexpr const char* startedLine = "[INFO] Application run loop started";
constexpr const char* commandsLine = "[INFO] Console commands: bootsel, quit";
constexpr const char* stoppedLine = "[INFO] Application run loop stopped";
