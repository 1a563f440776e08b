#include "platform/linux/process_list.h"

#include <filesystem>
#include <fstream>
#include <system_error>

namespace {

bool isProcess(const std::filesystem::path& folder) {
    return folder.filename().native().find_first_not_of("0123456789") == std::string::npos;
}

/// The kernel's own short name of a process is cut at 15 characters, so the command line has to tell.
std::string firstArgument(const std::filesystem::path& processFolder) {
    std::ifstream commandLine(processFolder / "cmdline", std::ios::binary);
    std::string argument;
    std::getline(commandLine, argument, '\0');
    return argument;
}

} // namespace

std::string_view programName(std::string_view firstArgument) {
    const std::size_t separator = firstArgument.find_last_of("/\\");
    return separator == std::string_view::npos ? firstArgument : firstArgument.substr(separator + 1);
}

bool findProcessIn(const std::string& procFolder, const std::function<bool(std::string_view name)>& visit) {
    std::error_code failure;
    for (std::filesystem::directory_iterator entry(procFolder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
        if (!isProcess(entry->path())) {
            continue;
        }
        const std::string argument = firstArgument(entry->path());
        const std::string_view name = programName(argument);
        if (!name.empty() && visit(name)) {
            return true;
        }
    }
    return false;
}
