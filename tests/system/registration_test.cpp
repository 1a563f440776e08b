// The simulator's list of add-ons, as the built executable leaves it and as an XML parser reads it.

#include "platform/file_system.h"
#include "tests/support/temp_folder.h"
#include "tests/system/support/bridge_process.h"
#include "tests/system/support/tested_system.h"

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace {

/// An entry, unescaped.
struct Addon {
    std::string name;
    std::string disabled;
    std::string path;
    std::string commandLine;
    bool operator==(const Addon&) const = default;
};

class Registration : public testing::Test {
protected:
    void SetUp() override {
        installProgram(TestedSystem::bridge(), executable);
        // Wine gives its programs these variables itself, by its prefix.
        roaming = TestedSystem::isWindows() ? winePrefixFolder("Roaming") : folder.makeFolder("Roaming");
        local = TestedSystem::isWindows() ? winePrefixFolder("Local") : folder.makeFolder("Local");
        store2024 = local + "/Packages/Microsoft.Limitless_8wekyb3d8bbwe/LocalCache/EXE.xml";
        boxed = roaming + "/Microsoft Flight Simulator/EXE.xml";
        boxed2024 = roaming + "/Microsoft Flight Simulator 2024/EXE.xml";
    }
    void TearDown() override {
        for (const std::string& path : {store2024, boxed, boxed2024}) {
            std::filesystem::remove_all(FileSystem::parentPath(path));
        }
    }

    /// The profile's folder of application data in the prefix that the tested program runs in.
    static std::string winePrefixFolder(const std::string& name) {
        const auto users = std::filesystem::path(TestedSystem::machineDataFolder()).parent_path() / "users";
        for (const auto& user : std::filesystem::directory_iterator(users)) {
            if (user.path().filename() != "Public") {
                return user.path() / "AppData" / name;
            }
        }
        throw std::runtime_error("no user in " + users.string());
    }

    /// Gives the exit code; what it printed stands in the two texts.
    int run(const std::vector<std::string>& arguments) {
        ChildProcessSettings settings;
        settings.command = TestedSystem::command(executable, arguments);
        settings.workingFolder = folder.path();
        settings.environment = {{"APPDATA", roaming}, {"LOCALAPPDATA", local}};
        ChildProcess process(settings);
        const int code = process.waitForExit().value_or(-1);
        output = process.output();
        errorOutput = process.errorOutput();
        // Windows ends lines in its own way.
        std::erase(output, '\r');
        std::erase(errorOutput, '\r');
        return code;
    }

    static void put(const std::string& path, const std::string& text) {
        std::filesystem::create_directories(FileSystem::parentPath(path));
        std::ofstream(path, std::ios::binary) << text;
    }

    static std::string contentOf(const std::string& path) {
        std::string text = "(absent)";
        FileSystem::readFile(path, text);
        return text;
    }

    static std::vector<Addon> addonsOf(const std::string& path) {
        pugi::xml_document document;
        const pugi::xml_parse_result result = document.load_file(path.c_str());
        EXPECT_TRUE(result) << path << ": " << result.description();
        std::vector<Addon> addons;
        for (const pugi::xml_node& node : document.child("SimBase.Document").children("Launch.Addon")) {
            addons.push_back({node.child_value("Name"), node.child_value("Disabled"), node.child_value("Path"),
                              node.child_value("CommandLine")});
        }
        return addons;
    }

    Addon bridge(const std::string& configuration) const {
        return {"VantrelBridgeHID", "False", TestedSystem::pathSeenByBridge(executable),
                "--config \"" + configuration + "\""};
    }

    const TempFolder folder;
    const std::string executable = folder.makeFolder("R&D panels") + "/VantrelBridgeHID.exe";
    const std::string others = "<?xml version=\"1.0\" encoding=\"Windows-1252\"?>\n"
                               "<SimBase.Document Type=\"SimConnect\" version=\"1,0\">\n"
                               "  <!-- weather first -->\n"
                               "  <Launch.Addon>\n"
                               "    <Name>Weather &amp; Wind</Name>\n"
                               "    <Disabled>True</Disabled>\n"
                               "    <Path>C:\\Weather\\wind.exe</Path>\n"
                               "  </Launch.Addon>\n"
                               "</SimBase.Document>\n";
    const Addon weather{"Weather & Wind", "True", "C:\\Weather\\wind.exe", ""};
    std::string roaming;
    std::string local;
    std::string store2024;
    std::string boxed;
    std::string boxed2024;
    std::string output;
    std::string errorOutput;
};

} // namespace

TEST_F(Registration, IsReadBackAsItWasGivenAndLeavesNothingBehind) {
    put(store2024, "");
    put(boxed, others);
    std::filesystem::create_directories(FileSystem::parentPath(boxed2024));
    const std::string configuration = "my <own> & only/config.json";

    ASSERT_EQ(run({"--register", "--config", configuration}), 0) << errorOutput;
    EXPECT_EQ(output, "Registered in 3 MSFS EXE.xml file(s).\n");
    EXPECT_EQ(addonsOf(store2024), std::vector<Addon>{bridge(configuration)});
    EXPECT_EQ(addonsOf(boxed), (std::vector<Addon>{weather, bridge(configuration)}));
    EXPECT_EQ(addonsOf(boxed2024), std::vector<Addon>{bridge(configuration)});
    EXPECT_EQ(contentOf(boxed + ".bak"), others);

    ASSERT_EQ(run({"--unregister"}), 0) << errorOutput;
    EXPECT_EQ(output, "Unregistered from 3 MSFS EXE.xml file(s).\n");
    EXPECT_EQ(addonsOf(store2024), std::vector<Addon>());
    EXPECT_EQ(contentOf(boxed), others);
    EXPECT_EQ(addonsOf(boxed2024), std::vector<Addon>());

    ASSERT_EQ(run({"--unregister"}), 0) << errorOutput;
    EXPECT_EQ(output, "Unregistered from 0 MSFS EXE.xml file(s).\n");
}

TEST_F(Registration, WithoutAConfigurationNamesTheOneBesideTheExecutable) {
    put(boxed, others);
    const std::string beside = folder.write("R&D panels/config/config.json", "{}");
    ASSERT_EQ(run({"--register"}), 0) << errorOutput;
    EXPECT_EQ(addonsOf(boxed), (std::vector<Addon>{weather, bridge(TestedSystem::pathSeenByBridge(beside))}));
}

TEST_F(Registration, EndsWithOneAtAFileThatCannotBeWritten) {
    put(boxed, others);
    std::filesystem::create_directories(boxed2024);
    EXPECT_EQ(run({"--register"}), 1);
    EXPECT_EQ(output, "");
    EXPECT_EQ(errorOutput, "EXE.xml update failed after 1 file(s): Failed to open for write: " +
                               TestedSystem::pathSeenByBridge(boxed2024) + "\n");
}
