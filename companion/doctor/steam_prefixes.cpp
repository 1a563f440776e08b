#include "companion/doctor/steam_prefixes.h"

#include "platform/file_system.h"
#include "text/ascii.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace {

/// In the home folder: Debian's and Steam's own package, then those of Flatpak and Snap.
constexpr std::array<std::string_view, 4> steamRoots{".local/share/Steam", ".steam/steam",
                                                     ".var/app/com.valvesoftware.Steam/.local/share/Steam",
                                                     "snap/steam/common/.local/share/Steam"};

/// Steam's numbers of the two simulators, and their folders.
constexpr std::array<std::pair<std::string_view, std::string_view>, 2> simulators{
    {{"1250410", "Microsoft Flight Simulator"}, {"2537590", "Microsoft Flight Simulator 2024"}}};

/// One may be a link to another.
void addOnce(std::vector<std::string>& folders, const std::string& folder) {
    const std::optional<std::string> resolved = FileSystem::resolved(folder);
    if (resolved && std::ranges::find(folders, *resolved) == folders.end()) {
        folders.push_back(*resolved);
    }
}

/// All libraries of a Steam installation; the first is its own.
std::vector<std::string> librariesOf(const std::string& root) {
    std::string text;
    FileSystem::readFile(FileSystem::join(root, "steamapps/libraryfolders.vdf"), text);
    std::vector<std::string> libraries = steamLibraries(text);
    libraries.insert(libraries.begin(), root);
    return libraries;
}

void addSimulators(const std::string& library, std::vector<std::string>& folders) {
    for (const auto& [number, name] : simulators) {
        addOnce(folders, library + "/steamapps/compatdata/" + std::string(number) +
                             "/pfx/drive_c/users/steamuser/AppData/Roaming/" + std::string(name));
    }
}

} // namespace

std::vector<std::string> steamSimulatorFolders(const Host& host) {
    const std::string home = host.environmentVariable("HOME").value_or("");
    std::vector<std::string> folders;
    if (home.empty()) {
        return folders;
    }
    for (const std::string_view root : steamRoots) {
        for (const std::string& library : librariesOf(FileSystem::join(home, std::string(root)))) {
            addSimulators(library, folders);
        }
    }
    return folders;
}

std::vector<std::string> steamLibraries(std::string_view text) {
    constexpr std::string_view key = "\"path\"";
    std::vector<std::string> libraries;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = trimmed(text.substr(0, end));
        const std::string_view value = line.starts_with(key) ? trimmed(line.substr(key.size())) : std::string_view();
        if (value.size() > 2 && value.starts_with('"') && value.ends_with('"')) {
            libraries.emplace_back(value.substr(1, value.size() - 2));
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return libraries;
}
