#include "app/app_paths.h"

#include "app/program_names.h"
#include "platform/data_folder_name.h"
#include "platform/file_system.h"

namespace {

std::string besideExecutable(const std::string& exeDir) {
    return FileSystem::join(FileSystem::join(exeDir, "config"), "config.json");
}

std::string inDataFolder(const std::string& commonAppData) {
    return FileSystem::join(FileSystem::join(commonAppData, dataFolderName), "config.json");
}

} // namespace

std::string exeDirectory(const Host& host) {
    return FileSystem::parentPath(host.executablePath());
}

std::string commonAppDataDirectory(const Host& host) {
    return host.commonDataFolder();
}

std::string logDirectory(bool consoleMode, const std::string& commonAppData, const std::string& exeDir) {
    if (!consoleMode && !commonAppData.empty()) {
        return FileSystem::join(FileSystem::join(commonAppData, dataFolderName), "logs");
    }
    return exeDir;
}

std::string defaultConfigPath(const Host& host) {
    const std::string exeDir = exeDirectory(host);
    std::string first = besideExecutable(exeDir);
    if (!exeDir.empty() && FileSystem::exists(first)) {
        return first;
    }
    const std::string commonAppData = commonAppDataDirectory(host);
    if (commonAppData.empty()) {
        return first;
    }
    // Doesn't check that the file exists: the message about a missing file should name the place where users keep
    // theirs.
    return inDataFolder(commonAppData);
}

std::vector<std::string> configCandidates(const Host& host) {
    std::vector<std::string> candidates;
    if (const std::string exeDir = exeDirectory(host); !exeDir.empty()) {
        candidates.push_back(besideExecutable(exeDir));
    }
    if (const std::string commonAppData = commonAppDataDirectory(host); !commonAppData.empty()) {
        candidates.push_back(inDataFolder(commonAppData));
    }
    return candidates;
}

std::string crashLinePath(const Host& host, bool consoleMode, const std::string& program) {
    const std::string folder = logDirectory(consoleMode, commonAppDataDirectory(host), exeDirectory(host));
    return FileSystem::join(folder, crashFileName(program));
}
