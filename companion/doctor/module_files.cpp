#include "companion/doctor/module_files.h"

#include <nlohmann/json.hpp>

#include <array>
#include <charconv>

namespace {

/// Null for a text that isn't JSON.
nlohmann::ordered_json parsed(std::string_view text) {
    return nlohmann::ordered_json::parse(text, nullptr, false);
}

std::array<unsigned, 3> numbersOf(const std::string& version) {
    std::array<unsigned, 3> numbers{};
    const char* at = version.data();
    const char* const end = at + version.size();
    for (unsigned& number : numbers) {
        at = std::from_chars(at, end, number).ptr;
        at += at == end ? 0 : 1;
    }
    return numbers;
}

} // namespace

std::optional<std::string> packageVersion(std::string_view manifest) {
    const nlohmann::ordered_json root = parsed(manifest);
    if (!root.is_object() || !root.contains("package_version") || !root["package_version"].is_string()) {
        return std::nullopt;
    }
    return root["package_version"].get<std::string>();
}

std::optional<std::vector<PackageFile>> packageFiles(std::string_view layout) {
    const nlohmann::ordered_json root = parsed(layout);
    if (!root.is_object() || !root.contains("content") || !root["content"].is_array()) {
        return std::nullopt;
    }
    std::vector<PackageFile> files;
    for (const nlohmann::ordered_json& entry : root["content"]) {
        if (entry.is_object() && entry.contains("path") && entry["path"].is_string() && entry.contains("size") &&
            entry["size"].is_number_unsigned()) {
            files.push_back({entry["path"].get<std::string>(), entry["size"].get<std::uint64_t>()});
        }
    }
    return files;
}

bool isOlder(const std::string& version, const std::string& than) {
    return numbersOf(version) < numbersOf(than);
}
