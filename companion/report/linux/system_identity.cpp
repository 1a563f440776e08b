#include "companion/report/system_identity.h"

#include "platform/file_system.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace {

/// The distribution's own name.
std::string distribution() {
    constexpr std::string_view key = "PRETTY_NAME=\"";
    std::string text;
    FileSystem::readFile("/etc/os-release", text);
    const std::size_t begin = text.find(key);
    if (begin == std::string::npos) {
        return "unknown distribution";
    }
    const std::size_t end = std::min(text.find('"', begin + key.size()), text.size());
    return text.substr(begin + key.size(), end - begin - key.size());
}

} // namespace

std::vector<std::string> computerNames() {
    std::array<char, 256> name{};
    // The last byte stays zero, which a name that is cut off wouldn't have.
    gethostname(name.data(), name.size() - 1);
    const std::string text = name.data();
    const bool isOwn = !text.empty() && text != "localhost" && !text.starts_with("localhost.");
    return isOwn ? std::vector{text} : std::vector<std::string>();
}

std::string systemVersion() {
    utsname system{};
    uname(&system);
    return std::string(system.sysname) + ' ' + system.release + ", " + distribution();
}
