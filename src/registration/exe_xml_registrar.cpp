#include "registration/exe_xml_registrar.h"

#include "logging/logger.h"
#include "platform/file_system.h"

#include <algorithm>
#include <utility>

namespace {

void backUp(const std::string& path) {
    std::string reason;
    if (FileSystem::existsOrFalse(path) && !FileSystem::copyFile(path, path + ".bak", reason)) {
        logWarn("Failed to back up EXE.xml before writing: " + path + " (" + reason + ")");
    }
}

} // namespace

namespace ExeXmlRegistrar {

std::vector<std::string> candidateExeXmlPaths(const std::string& localAppData, const std::string& appData) {
    std::vector<std::string> paths;
    if (!localAppData.empty()) {
        paths.push_back(localAppData + R"(\Packages\Microsoft.FlightSimulator_8wekyb3d8bbwe\LocalCache\EXE.xml)");
        paths.push_back(localAppData + R"(\Packages\Microsoft.FlightSimulator_8wekyb3d8bbwe\LocalState\EXE.xml)");
        paths.push_back(localAppData + R"(\Packages\Microsoft.Limitless_8wekyb3d8bbwe\LocalCache\EXE.xml)");
    }
    if (!appData.empty()) {
        paths.push_back(appData + R"(\Microsoft Flight Simulator\EXE.xml)");
        paths.push_back(appData + R"(\Microsoft Flight Simulator 2024\EXE.xml)");
    }
    return paths;
}

std::vector<std::string> discoverExeXmlPaths(const Host& host) {
    const std::string appData = host.environmentVariable("APPDATA").value_or("");
    const std::string localAppData = host.environmentVariable("LOCALAPPDATA").value_or("");
    std::vector<std::string> paths = candidateExeXmlPaths(localAppData, appData);
    std::transform(paths.begin(), paths.end(), paths.begin(), FileSystem::toOwnSeparators);
    std::erase_if(paths,
                  [](const std::string& path) { return !FileSystem::existsOrFalse(FileSystem::parentPath(path)); });
    return paths;
}

bool readExeXml(const std::string& path, std::string& text, std::string& error) {
    std::string content;
    if (FileSystem::tryReadFile(path, content) == FileSystem::ReadOutcome::ReadFailed) {
        error = "EXE.xml could not be read: " + path;
        return false;
    }
    text = std::move(content);
    return true;
}

std::string readExeXml(const std::string& path) {
    std::string text;
    std::string ignored;
    readExeXml(path, text, ignored);
    return text;
}

bool writeExeXml(const std::string& path, std::string_view text, std::string& error) {
    FileSystem::makeFolders(FileSystem::parentPath(path));
    backUp(path);
    std::ofstream file = FileSystem::openForWriting(path);
    if (!file) {
        error = "Failed to open for write: " + path;
        return false;
    }
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    if (!file) {
        error = "Failed to write: " + path;
        return false;
    }
    return true;
}

int registerInExeXml(const Host& host, const std::string& name, const std::string& path, const std::string& commandLine,
                     std::string& error) {
    int written = 0;
    for (const std::string& file : discoverExeXmlPaths(host)) {
        std::string text;
        if (!readExeXml(file, text, error) ||
            !writeExeXml(file, applyRegistration(text, name, path, commandLine), error)) {
            return written;
        }
        ++written;
    }
    return written;
}

int unregisterFromExeXml(const Host& host, const std::string& name, std::string& error) {
    int written = 0;
    for (const std::string& file : discoverExeXmlPaths(host)) {
        std::string text;
        if (!readExeXml(file, text, error)) {
            return written;
        }
        const std::string rest = removeRegistration(text, name);
        if (rest == text) {
            continue;
        }
        if (!writeExeXml(file, rest, error)) {
            return written;
        }
        ++written;
    }
    return written;
}

} // namespace ExeXmlRegistrar
