#include "companion/cli/arguments.h"

#include "platform/file_system.h"

#include <windows.h>
// Needs windows.h first.
#include <shellapi.h>

#include <filesystem>
#include <memory>

namespace {

bool fitsCodePage(const std::filesystem::path& text) {
    return FileSystem::fromBytes(FileSystem::toBytes(text)) == text;
}

/// The same for a file that doesn't exist, and where the volume has no short names.
std::filesystem::path shortName(const std::filesystem::path& path) {
    std::wstring name(GetShortPathNameW(path.c_str(), nullptr, 0), L'\0');
    name.resize(GetShortPathNameW(path.c_str(), name.data(), static_cast<DWORD>(name.size())));
    return name.empty() ? path : std::filesystem::path(name);
}

std::filesystem::path withinCodePage(const std::filesystem::path& path) {
    std::filesystem::path result;
    for (const std::filesystem::path& part : path) {
        result /= part;
        result = fitsCodePage(part) ? result : shortName(result);
    }
    return result;
}

std::string pathBytes(const std::filesystem::path& path) {
    return FileSystem::toBytes(fitsCodePage(path) ? path : withinCodePage(path));
}

/// An option's path may follow it in the same word, as in "--config=PATH".
std::string argumentBytes(const std::wstring& argument) {
    const std::size_t equals = argument.starts_with(L"--") ? argument.find(L'=') : std::wstring::npos;
    const std::size_t valueBegin = equals == std::wstring::npos ? 0 : equals + 1;
    return FileSystem::toBytes(argument.substr(0, valueBegin)) + pathBytes(argument.substr(valueBegin));
}

} // namespace

std::vector<std::string> programArguments(int, const char* const*) {
    int count = 0;
    const std::unique_ptr<LPWSTR, decltype(&LocalFree)> words(CommandLineToArgvW(GetCommandLineW(), &count), LocalFree);
    std::vector<std::string> arguments;
    for (int i = 0; i < count; ++i) {
        arguments.push_back(argumentBytes(words.get()[i]));
    }
    return arguments;
}
