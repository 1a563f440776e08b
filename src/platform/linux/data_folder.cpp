#include "platform/linux/data_folder.h"

#include "platform/data_folder_name.h"
#include "platform/file_system.h"

#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace {

bool canWriteInto(const std::string& folder) {
    return faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

bool isUsable(const std::string& machineFolder) {
    const std::string own = FileSystem::join(machineFolder, dataFolderName);
    return canWriteInto(own) || (errno == ENOENT && canWriteInto(machineFolder));
}

/// The variable's value if it is an absolute path; empty otherwise.
std::string absoluteVariable(const Host& host, const std::string& name) {
    const std::string value = host.environmentVariable(name).value_or("");
    return FileSystem::isAbsolute(value) ? value : std::string();
}

/// The home folder by the system's list of users.
std::string listedHomeFolder() {
    passwd entry{};
    passwd* found = nullptr;
    std::array<char, 16384> texts{};
    getpwuid_r(geteuid(), &entry, texts.data(), texts.size(), &found);
    return found == nullptr ? std::string() : std::string(entry.pw_dir);
}

std::string userDataFolder(const Host& host) {
    if (std::string folder = absoluteVariable(host, "XDG_DATA_HOME"); !folder.empty()) {
        return folder;
    }
    std::string home = absoluteVariable(host, "HOME");
    if (home.empty()) {
        home = listedHomeFolder();
    }
    return home.empty() ? std::string() : FileSystem::join(home, ".local/share");
}

} // namespace

std::string dataFolder(const std::string& machineFolder, const Host& host) {
    return isUsable(machineFolder) ? machineFolder : userDataFolder(host);
}
