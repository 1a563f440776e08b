#include "app/registration_commands.h"

#include "app/program_names.h"
#include "registration/exe_xml_registrar.h"

#include <cstdio>
#include <vector>

namespace {

int report(const char* done, int files, const std::string& error) {
    if (!error.empty()) {
        std::fprintf(stderr, "EXE.xml update failed after %d file(s): %s\n", files, error.c_str());
        return 1;
    }
    std::printf("%s %d MSFS EXE.xml file(s).\n", done, files);
    return 0;
}

} // namespace

int listExeXmlFiles(const Host& host) {
    const std::vector<std::string> paths = ExeXmlRegistrar::discoverExeXmlPaths(host);
    if (paths.empty()) {
        std::printf("No MSFS installations detected.\n");
    }
    for (const std::string& path : paths) {
        std::printf("%s\n", path.c_str());
    }
    return 0;
}

std::string registeredArguments(const std::string& configPath) {
    return "--config \"" + configPath + "\"";
}

int registerProgram(const Host& host, const std::string& configPath) {
    const std::string arguments = registeredArguments(configPath);
    std::string error;
    const int files = ExeXmlRegistrar::registerInExeXml(host, programName, host.executablePath(), arguments, error);
    return report("Registered in", files, error);
}

int unregisterProgram(const Host& host) {
    std::string error;
    const int files = ExeXmlRegistrar::unregisterFromExeXml(host, programName, error);
    return report("Unregistered from", files, error);
}
