#include "platform/linux/process_list.h"

#include "platform/file_system.h"

#include <fstream>

namespace {

bool isProcess(const std::string& folderName) {
    return folderName.find_first_not_of("0123456789") == std::string::npos;
}

/// The kernel's own short name of a process is cut at 15 characters, so the name comes from the command line.
std::string firstArgument(const std::string& processFolder) {
    std::ifstream commandLine(FileSystem::join(processFolder, "cmdline"), std::ios::binary);
    std::string argument;
    std::getline(commandLine, argument, '\0');
    return argument;
}

} // namespace

std::string_view programNameIn(std::string_view firstArgument) {
    const std::size_t separator = firstArgument.find_last_of("/\\");
    return separator == std::string_view::npos ? firstArgument : firstArgument.substr(separator + 1);
}

bool findProcessIn(const std::string& procFolder, const std::function<bool(std::string_view name)>& visit) {
    for (const std::string& folderName : FileSystem::namesIn(procFolder)) {
        if (!isProcess(folderName)) {
            continue;
        }
        const std::string argument = firstArgument(FileSystem::join(procFolder, folderName));
        const std::string_view name = programNameIn(argument);
        if (!name.empty() && visit(name)) {
            return true;
        }
    }
    return false;
}
