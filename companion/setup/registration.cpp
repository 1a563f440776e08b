#include "companion/setup/registration.h"

#include "app/program_names.h"
#include "app/registration_commands.h"
#include "registration/exe_xml_registrar.h"

#include <cstddef>
#include <functional>
#include <map>

namespace {

std::map<std::string, std::string> textsByPath(const Host& host) {
    std::map<std::string, std::string> texts;
    for (const std::string& path : ExeXmlRegistrar::discoverExeXmlPaths(host)) {
        texts[path] = ExeXmlRegistrar::readExeXml(path);
    }
    return texts;
}

std::vector<RegistrationChange> changesOf(const Host& host, const std::function<void()>& edit) {
    const std::map<std::string, std::string> before = textsByPath(host);
    edit();
    std::vector<RegistrationChange> changes;
    for (const auto& [path, text] : textsByPath(host)) {
        const auto old = before.find(path);
        std::vector<DiffLine> lines = lineDiff(old == before.end() ? "" : old->second, text);
        if (!lines.empty()) {
            changes.push_back({path, std::move(lines)});
        }
    }
    return changes;
}

} // namespace

std::vector<RegistrationPlace> registrationPlaces(const Host& host) {
    std::vector<RegistrationPlace> places;
    for (const auto& [path, text] : textsByPath(host)) {
        std::size_t begin = 0;
        std::size_t end = 0;
        places.push_back({path, ExeXmlRegistrar::findAddonBlock(text, programName, begin, end)});
    }
    return places;
}

std::vector<RegistrationChange> registerBridge(const Host& host, const std::string& program,
                                               const std::string& configPath, std::string& error) {
    const std::string arguments = registeredArguments(configPath);
    return changesOf(host, [&] { ExeXmlRegistrar::registerInExeXml(host, programName, program, arguments, error); });
}

std::vector<RegistrationChange> unregisterBridge(const Host& host, std::string& error) {
    return changesOf(host, [&] { ExeXmlRegistrar::unregisterFromExeXml(host, programName, error); });
}
