// The simulator's list of add-ons, as the built executable leaves it and as an XML parser reads it.

#include "platform/file_system.h"
#include "tests/support/temp_folder.h"
#include "tests/system/support/bridge_process.h"
#include "tests/system/support/tested_system.h"

#include <gtest/gtest.h>
#include <pugixml.hpp>

namespace {

/// An entry, unescaped.
struct Addon {
    std::string name;
    std::string disabled;
    std::string path;
    std::string commandLine;
    bool operator==(const Addon&) const = default;
};

using Addons = std::vector<Addon>;

class LinuxRegistration : public testing::Test {
protected:
    void SetUp() override { installProgram(TestedSystem::bridge(), executable); }

    /// The run's standard output; it must end with 0.
    std::string run(const std::vector<std::string>& arguments) {
        ChildProcessSettings settings;
        settings.command = TestedSystem::command(executable, arguments);
        settings.environment = {"APPDATA=" + folder.path("Roaming"), "LOCALAPPDATA=" + folder.path("Local")};
        ChildProcess process(settings);
        EXPECT_EQ(process.waitForExit(), 0) << process.errorOutput();
        return process.output();
    }

    static std::string contentOf(const std::string& path) {
        std::string text = "(absent)";
        FileSystem::readFile(path, text);
        return text;
    }

    static Addons addonsOf(const std::string& path) {
        pugi::xml_document document;
        const pugi::xml_parse_result result = document.load_file(path.c_str());
        EXPECT_TRUE(result) << path << ": " << result.description();
        Addons addons;
        for (const pugi::xml_node& node : document.child("SimBase.Document").children("Launch.Addon")) {
            addons.push_back({node.child_value("Name"), node.child_value("Disabled"), node.child_value("Path"),
                              node.child_value("CommandLine")});
        }
        return addons;
    }

    const TempFolder folder;
    const std::string executable = folder.makeFolder("R&D panels") + "/VantrelBridgeHID";
};

} // namespace

TEST_F(LinuxRegistration, IsReadBackAsItWasGivenAndLeavesNothingBehind) {
    const std::string others = "<?xml version=\"1.0\" encoding=\"Windows-1252\"?>\n"
                               "<SimBase.Document Type=\"SimConnect\" version=\"1,0\">\n"
                               "  <!-- weather first -->\n"
                               "  <Launch.Addon>\n"
                               "    <Name>Weather &amp; Wind</Name>\n"
                               "    <Disabled>True</Disabled>\n"
                               "    <Path>C:\\Weather\\wind.exe</Path>\n"
                               "  </Launch.Addon>\n"
                               "</SimBase.Document>\n";
    const std::string store2024 =
        folder.write("Local/Packages/Microsoft.Limitless_8wekyb3d8bbwe/LocalCache/EXE.xml", "");
    const std::string boxed = folder.write("Roaming/Microsoft Flight Simulator/EXE.xml", others);
    const std::string boxed2024 = folder.makeFolder("Roaming/Microsoft Flight Simulator 2024") + "/EXE.xml";
    // The parser takes a bare ampersand as it is, but not one that begins an entity.
    const std::string configuration = "my <own> &amp; only/config.json";
    const Addon weather{"Weather & Wind", "True", "C:\\Weather\\wind.exe", ""};
    const Addon bridge{"VantrelBridgeHID", "False", executable, "--config \"" + configuration + "\""};

    EXPECT_EQ(run({"--register", "--config", configuration}), "Registered in 3 MSFS EXE.xml file(s).\n");
    EXPECT_EQ(addonsOf(store2024), Addons{bridge});
    EXPECT_EQ(addonsOf(boxed), (Addons{weather, bridge}));
    EXPECT_EQ(addonsOf(boxed2024), Addons{bridge});
    EXPECT_EQ(contentOf(boxed + ".bak"), others);

    EXPECT_EQ(run({"--unregister"}), "Unregistered from 3 MSFS EXE.xml file(s).\n");
    EXPECT_EQ(addonsOf(store2024), Addons());
    EXPECT_EQ(contentOf(boxed), others);
    EXPECT_EQ(addonsOf(boxed2024), Addons());
}
