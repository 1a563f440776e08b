#include "companion/doctor/simulator_folders.h"

#include "companion/doctor/steam_prefixes.h"
#include "platform/file_system.h"
#include "registration/exe_xml_registrar.h"
#include "text/ascii.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace {

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

SimulatorFolder describe(const std::string& path) {
    SimulatorFolder folder;
    folder.path = path;
    folder.isMain = FileSystem::fileName(folder.path) != "LocalState";
    folder.isInWine = contains(folder.path, "/drive_c/");
    folder.is2024 = contains(folder.path, "Microsoft.Limitless_") || folder.path.ends_with("2024");
    const bool isStore = contains(folder.path, "_8wekyb3d8bbwe");
    folder.name = std::string("MSFS ") + (folder.is2024 ? "2024" : "2020") + (isStore ? " (Store" : " (Steam") +
                  (folder.isMain ? ")" : ", LocalState)");
    return folder;
}

bool hasDrive(std::string_view path) {
    return path.size() > 2 && path[1] == ':' && (path[2] == '\\' || path[2] == '/');
}

/// The folder of a drive in the Wine prefix that `folder` is in. None if it isn't in one.
std::optional<std::string> driveFolder(char letter, const std::string& folder) {
    const std::size_t driveC = folder.find("/drive_c/");
    if (driveC == std::string::npos) {
        return std::nullopt;
    }
    const std::string prefix = folder.substr(0, driveC);
    return toLower(letter) == 'c' ? prefix + "/drive_c" : prefix + "/dosdevices/" + toLower(letter) + ":";
}

/// The entry of a folder that has this name in whatever letter case.
std::string entryInAnyCase(const std::string& folder, const std::string& name) {
    std::string asGiven = FileSystem::join(folder, name);
    if (FileSystem::existsOrFalse(asGiven)) {
        return asGiven;
    }
    for (const std::string& entry : FileSystem::namesIn(folder)) {
        if (equalsIgnoringCase(entry, name)) {
            return FileSystem::join(folder, entry);
        }
    }
    return asGiven;
}

} // namespace

std::vector<SimulatorFolder> simulatorFolders(const Host& host) {
    std::vector<SimulatorFolder> folders;
    for (const std::string& path : ExeXmlRegistrar::discoverExeXmlPaths(host)) {
        folders.push_back(describe(FileSystem::parentPath(path)));
    }
    if (folders.empty()) {
        std::ranges::transform(steamSimulatorFolders(host), std::back_inserter(folders), describe);
    }
    return folders;
}

std::string pathInAnyCase(const std::string& folder, const std::string& name) {
    std::string path = folder;
    std::string_view rest = name;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find_first_of("/\\"), rest.size());
        if (end > 0) {
            path = entryInAnyCase(path, std::string(rest.substr(0, end)));
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return path;
}

std::optional<std::string> ownPath(const std::string& path, const SimulatorFolder& simulator) {
    if (FileSystem::isAbsolute(path)) {
        return path;
    }
    if (!hasDrive(path)) {
        return std::nullopt;
    }
    const std::optional<std::string> drive = driveFolder(path[0], simulator.path);
    return drive ? std::optional(pathInAnyCase(*drive, path.substr(2))) : std::nullopt;
}
