#include "companion/setup/process_control.h"

#include "platform/file_system.h"
#include "platform/linux/process_list.h"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <string_view>
#include <system_error>

namespace {

std::int64_t leadingNumber(std::string_view text) {
    std::int64_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

/// In the file "stat" the name is in brackets and may hold anything; then come the state, a letter, and the parent.
std::int64_t parentIn(const std::string& stat) {
    constexpr std::string_view stateAndSpaces = ") S ";
    const std::size_t close = stat.rfind(')');
    return close == std::string::npos
               ? 0
               : leadingNumber(std::string_view(stat).substr(close).substr(stateAndSpaces.size()));
}

std::vector<ProcessFacts> listProcesses() {
    std::vector<ProcessFacts> processes;
    for (const std::string& folder : FileSystem::namesIn("/proc")) {
        const std::string path = FileSystem::join("/proc", folder);
        std::string arguments;
        std::string stat;
        if (leadingNumber(folder) != 0 && FileSystem::readFile(FileSystem::join(path, "cmdline"), arguments) &&
            FileSystem::readFile(FileSystem::join(path, "stat"), stat)) {
            processes.push_back({leadingNumber(folder), parentIn(stat), std::string(programNameIn(arguments.c_str()))});
        }
    }
    return processes;
}

std::string askToEnd(std::int64_t id) {
    return kill(static_cast<pid_t>(id), SIGTERM) == 0 ? "" : std::generic_category().message(errno);
}

} // namespace

ProcessControl systemProcesses() {
    return {listProcesses, askToEnd,
            "Its process gets the signal SIGTERM, which ends a bridge without a console at once."};
}
