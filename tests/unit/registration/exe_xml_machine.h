#pragma once

#include "platform/file_system.h"
#include "registration/exe_xml_registrar.h"
#include "tests/support/fake_host.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_folder.h"
#include "tests/unit/registration/exe_xml_samples.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

/// A machine whose two folders of application data are a test's own. No simulator is installed at first.
class ExeXmlMachine : public testing::Test {
protected:
    /// The installations, in the order of the work.
    enum Installation { StoreCache, StoreState, Store2024, Boxed, Boxed2024 };

    void SetUp() override {
        fake.variables["LOCALAPPDATA"] = folder.path("Local");
        fake.variables["APPDATA"] = folder.path("Roaming");
        host = fake.record();
    }

    /// Where the installation has its file.
    std::string pathOf(Installation installation) const {
        return FileSystem::toOwnSeparators(
            ExeXmlRegistrar::candidateExeXmlPaths(folder.path("Local"), folder.path("Roaming"))[installation]);
    }

    static void put(const std::string& path, const std::string& text) {
        std::ofstream file(FileSystem::fromBytes(path), std::ios::binary | std::ios::trunc);
        file << text;
    }

    /// Makes the installation's folder without a file in it.
    std::string install(Installation installation) const {
        FileSystem::makeFolders(FileSystem::parentPath(pathOf(installation)));
        return pathOf(installation);
    }

    std::string install(Installation installation, const std::string& text) const {
        put(install(installation), text);
        return pathOf(installation);
    }

    static bool exists(const std::string& path) { return FileSystem::existsOrFalse(path); }

    /// The file's text; "(absent)" without one.
    static std::string contentOf(const std::string& path) {
        std::string text = "(absent)";
        FileSystem::readFile(path, text);
        return text;
    }

    int registerIt() {
        return ExeXmlRegistrar::registerInExeXml(host, Samples::name, Samples::path, Samples::commandLine, error);
    }
    int unregisterIt() { return ExeXmlRegistrar::unregisterFromExeXml(host, Samples::name, error); }

    TempFolder folder;
    FakeHost fake;
    Host host;
    LogCapture log;
    std::string error;
};
