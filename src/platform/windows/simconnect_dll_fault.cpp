#include "platform/windows/simconnect_dll_fault.h"

#include "platform/file_system.h"

#include <windows.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <optional>

namespace {

// These two are not in every compiler's headers.
constexpr std::uint32_t errorVirusInfected = 225;
constexpr std::uint32_t errorVirusDeleted = 226;

/// The folders that are searched for a library, in this order.
std::array<std::string, 2> searchedFolders() {
    constexpr DWORD longestPath = 32767;
    std::string program(longestPath, '\0');
    program.resize(GetModuleFileNameA(nullptr, program.data(), longestPath));
    std::string system(longestPath, '\0');
    system.resize(GetSystemDirectoryA(system.data(), longestPath));
    return {FileSystem::parentPath(program), system};
}

/// The file that the system must have found; none if there is no such file.
std::optional<std::string> foundFile(const std::string& fileName) {
    for (const std::string& folder : searchedFolders()) {
        const std::string path = FileSystem::join(folder, fileName);
        if (FileSystem::isAbsolute(path) && GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES) {
            return path;
        }
    }
    return std::nullopt;
}

/// False when the file is too short.
template <typename Record>
bool readInto(std::ifstream& file, Record& record) {
    std::array<char, sizeof(Record)> bytes{};
    if (!file.read(bytes.data(), bytes.size())) {
        return false;
    }
    std::memcpy(&record, bytes.data(), bytes.size());
    return true;
}

/// The processor type of an executable file; 0 if it isn't one.
std::uint16_t machineOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    IMAGE_DOS_HEADER dosHeader{};
    if (!readInto(file, dosHeader) || dosHeader.e_magic != IMAGE_DOS_SIGNATURE) {
        return 0;
    }
    struct {
        DWORD signature = 0;
        IMAGE_FILE_HEADER file{};
    } header;
    file.seekg(dosHeader.e_lfanew);
    return readInto(file, header) && header.signature == IMAGE_NT_SIGNATURE ? header.file.Machine : std::uint16_t{0};
}

std::string unusable(const std::string& path, const std::string& reason) {
    return path + " can't be used: " + reason;
}

std::string reasonOf(const std::string& path, std::uint32_t errorCode) {
    const std::uint16_t machine = machineOf(path);
    if (machine == IMAGE_FILE_MACHINE_I386) {
        return "it is made for 32-bit programs, and this is a 64-bit one";
    }
    if (machine != 0 && machine != IMAGE_FILE_MACHINE_AMD64) {
        return "it is made for another kind of processor";
    }
    switch (errorCode) {
    case ERROR_MOD_NOT_FOUND:
        return "a library that it needs is missing; install the Visual C++ runtime (x64)";
    case ERROR_PROC_NOT_FOUND:
        return "a library that it needs is too old; install the current Visual C++ runtime (x64)";
    case ERROR_BAD_EXE_FORMAT:
    case ERROR_FILE_INVALID:
        return machine == 0 ? "the file is damaged, or no Windows library"
                            : "it, or a library that it needs, is damaged";
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
        return "Windows denies access to the file";
    case errorVirusInfected:
    case errorVirusDeleted:
        return "the virus scanner holds it back";
    case ERROR_DLL_INIT_FAILED:
        return "it failed to start";
    default:
        return "Windows can't load it";
    }
}

} // namespace

std::string simConnectDllFault(const std::string& fileName, std::uint32_t errorCode) {
    const std::optional<std::string> path = foundFile(fileName);
    if (!path) {
        return "There is no " + fileName + " beside the program or in the system folder";
    }
    return unusable(*path, reasonOf(*path, errorCode).append(" (error ").append(std::to_string(errorCode)) + ")");
}

std::string simConnectDllLacks(const std::string& fileName, const std::string& function) {
    return unusable(foundFile(fileName).value_or(fileName), "it lacks the function " + function);
}
