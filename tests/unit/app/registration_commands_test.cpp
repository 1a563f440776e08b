// --list-exe-xml, --register and --unregister, through the whole program.

#include "app/program.h"
#include "registration/exe_xml_registrar.h"
#include "tests/unit/app/app_fixture.h"

namespace {

using Lines = std::vector<std::string>;

class RegistrationCommands : public AppTest {
protected:
    void SetUp() override {
        AppTest::SetUp();
        host.variables["APPDATA"] = folder.path("Roaming");
        host.variables["LOCALAPPDATA"] = folder.path("Local");
        boxed = install("Roaming", "Microsoft Flight Simulator");
        boxed2024 = install("Roaming", "Microsoft Flight Simulator 2024");
    }

    /// Gives where the installation has its file, in a folder that exists now.
    std::string install(const std::string& data, const std::string& simulator) const {
        const std::string path = FileSystem::toOwnSeparators(folder.path(data) + "\\" + simulator + "\\EXE.xml");
        FileSystem::makeFolders(FileSystem::parentPath(path));
        return path;
    }

    int runOn(const Platform& records, std::vector<const char*> options) {
        options.insert(options.begin(), "VantrelBridgeHID");
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int code = runProgram(records, static_cast<int>(options.size()), options.data());
        errorOutput = testing::internal::GetCapturedStderr();
        output = testing::internal::GetCapturedStdout();
        return code;
    }
    int run(const std::vector<const char*>& options) { return runOn(platform(), options); }

    static std::string contentOf(const std::string& path) {
        std::string text = "(absent)";
        FileSystem::readFile(path, text);
        return text;
    }

    /// The file of an installation that had none, for a program started with that configuration.
    std::string registered(const std::string& configuration) const {
        return ExeXmlRegistrar::applyRegistration("", "VantrelBridgeHID", host.executable,
                                                  "--config \"" + configuration + "\"");
    }
    static std::string fresh() {
        return ExeXmlRegistrar::removeRegistration(ExeXmlRegistrar::applyRegistration("", "x", "", ""), "x");
    }

    std::string boxed;
    std::string boxed2024;
    std::string output;
    std::string errorOutput;
};

TEST_F(RegistrationCommands, ListPrintsEachPathOnALine) {
    EXPECT_EQ(run({"--list-exe-xml"}), 0);
    EXPECT_EQ(output, boxed + "\n" + boxed2024 + "\n");
    EXPECT_EQ(errorOutput, "");
}

TEST_F(RegistrationCommands, ListSaysWhenThereIsNoSimulator) {
    host.variables.clear();
    EXPECT_EQ(run({"--list-exe-xml"}), 0);
    EXPECT_EQ(output, "No MSFS installations detected.\n");
    host.variables["APPDATA"] = "";
    host.variables["LOCALAPPDATA"] = "";
    EXPECT_EQ(run({"--list-exe-xml"}), 0);
    EXPECT_EQ(output, "No MSFS installations detected.\n");
}

TEST_F(RegistrationCommands, ListEndsTheRunWhateverStandsBesideIt) {
    EXPECT_EQ(run({"--register", "--unregister", "--console", "--list-exe-xml"}), 0);
    EXPECT_EQ(output, boxed + "\n" + boxed2024 + "\n");
    EXPECT_EQ(contentOf(boxed), "(absent)");
}

TEST_F(RegistrationCommands, ListComesAfterTheSearchForTheConfiguration) {
    Platform records = platform();
    Lines order;
    records.host.executablePath = [&order] {
        order.emplace_back("search");
        return std::string();
    };
    records.host.environmentVariable = [&order](const std::string& name) {
        order.push_back(name);
        return std::optional<std::string>();
    };
    runOn(records, {"--list-exe-xml"});
    EXPECT_EQ(order, (Lines{"search", "APPDATA", "LOCALAPPDATA"}));
}

TEST_F(RegistrationCommands, RegisterEntersTheExecutableWithItsConfiguration) {
    EXPECT_EQ(run({"--register", "--config", configPath.c_str()}), 0);
    EXPECT_EQ(output, "Registered in 2 MSFS EXE.xml file(s).\n");
    EXPECT_EQ(errorOutput, "");
    EXPECT_EQ(contentOf(boxed), registered(configPath));
    EXPECT_EQ(contentOf(boxed2024), registered(configPath));
}

TEST_F(RegistrationCommands, RegisterWritesTheLinesThatTheSimulatorReads) {
    host.executable = "C:\\R&D\\VantrelBridgeHID.exe";
    run({"--register", "--config", "my <own>.json"});
    EXPECT_NE(contentOf(boxed).find("    <Launch.Addon>\r\n"
                                    "        <Name>VantrelBridgeHID</Name>\r\n"
                                    "        <Disabled>False</Disabled>\r\n"
                                    "        <Path>C:\\R&amp;D\\VantrelBridgeHID.exe</Path>\r\n"
                                    "        <CommandLine>--config \"my &lt;own&gt;.json\"</CommandLine>\r\n"
                                    "    </Launch.Addon>\r\n"),
              std::string::npos);
}

TEST_F(RegistrationCommands, RegisterPassesARelativeConfigurationOnUnchanged) {
    run({"--register", "--config", "../a b/./config.json"});
    EXPECT_EQ(contentOf(boxed), registered("../a b/./config.json"));
}

TEST_F(RegistrationCommands, RegisterWithoutAConfigurationPassesTheFileBesideTheExecutable) {
    folder.write("exe/config/config.json", "{}");
    run({"--register"});
    EXPECT_EQ(contentOf(boxed),
              registered(FileSystem::join(FileSystem::join(folder.path("exe"), "config"), "config.json")));
}

TEST_F(RegistrationCommands, RegisterWithNoFileAnywherePassesTheOneOfThePerMachineFolder) {
    const std::string perMachine =
        FileSystem::join(FileSystem::join(folder.path("data"), "VantrelBridge"), "config.json");
    run({"--register"});
    EXPECT_EQ(contentOf(boxed), registered(perMachine));
    run({"--register", "--config", ""});
    EXPECT_EQ(contentOf(boxed), registered(perMachine));
    run({"--register", "--config"});
    EXPECT_EQ(contentOf(boxed), registered(perMachine));
}

TEST_F(RegistrationCommands, RegisterPassesNoOtherOptionOn) {
    run({"--console", "--hid-trace", "--register", "--config", "c.json"});
    EXPECT_EQ(contentOf(boxed), registered("c.json"));
}

TEST_F(RegistrationCommands, RegisterOfAnUnknownExecutableWritesAnEmptyPath) {
    host.executable.clear();
    run({"--register", "--config", "c.json"});
    EXPECT_EQ(contentOf(boxed), registered("c.json"));
    EXPECT_NE(contentOf(boxed).find("<Path></Path>"), std::string::npos);
}

TEST_F(RegistrationCommands, RegisterWinsOverUnregister) {
    EXPECT_EQ(run({"--unregister", "--register", "--config", "c.json"}), 0);
    EXPECT_EQ(output, "Registered in 2 MSFS EXE.xml file(s).\n");
    EXPECT_EQ(contentOf(boxed), registered("c.json"));
}

TEST_F(RegistrationCommands, RegisterWithoutASimulatorIsNoFailure) {
    host.variables.clear();
    EXPECT_EQ(run({"--register"}), 0);
    EXPECT_EQ(output, "Registered in 0 MSFS EXE.xml file(s).\n");
}

TEST_F(RegistrationCommands, UnregisterTakesTheEntryOut) {
    run({"--register"});
    EXPECT_EQ(run({"--unregister"}), 0);
    EXPECT_EQ(output, "Unregistered from 2 MSFS EXE.xml file(s).\n");
    EXPECT_EQ(errorOutput, "");
    EXPECT_EQ(contentOf(boxed), fresh());
    EXPECT_EQ(contentOf(boxed2024), fresh());
}

TEST_F(RegistrationCommands, UnregisterWithoutAnEntryWritesNothing) {
    EXPECT_EQ(run({"--unregister"}), 0);
    EXPECT_EQ(output, "Unregistered from 0 MSFS EXE.xml file(s).\n");
    EXPECT_EQ(contentOf(boxed), "(absent)");
}

TEST_F(RegistrationCommands, AFileThatCannotBeWrittenGivesOneAndSaysHowManyWereDone) {
    FileSystem::makeFolders(boxed2024);
    EXPECT_EQ(run({"--register"}), 1);
    EXPECT_EQ(errorOutput, "EXE.xml update failed after 1 file(s): Failed to open for write: " + boxed2024 + "\n");
    EXPECT_EQ(output, "");
}

TEST_F(RegistrationCommands, AFirstFileThatCannotBeWrittenGivesOneAfterNone) {
    FileSystem::makeFolders(boxed);
    EXPECT_EQ(run({"--register"}), 1);
    EXPECT_EQ(errorOutput, "EXE.xml update failed after 0 file(s): Failed to open for write: " + boxed + "\n");
}

TEST_F(RegistrationCommands, ABackupThatFailsIsNoFailure) {
    run({"--register"});
    FileSystem::makeFolders(boxed + ".bak");
    EXPECT_EQ(run({"--register"}), 0);
    EXPECT_EQ(output, "Registered in 2 MSFS EXE.xml file(s).\n");
}

TEST_F(RegistrationCommands, NeitherOpenALogNorAskForTheLockNorStartAThread) {
    Platform records = platform();
    bool asked = false;
    records.host.acquireSingleInstance = [&asked](const std::string&) {
        asked = true;
        return SingleInstance::Acquired;
    };
    for (const char* option : {"--list-exe-xml", "--register", "--unregister"}) {
        EXPECT_EQ(runOn(records, {option, "--console"}), 0) << option;
    }
    EXPECT_FALSE(asked);
    EXPECT_FALSE(FileSystem::exists(host.dataFolder));
    EXPECT_FALSE(FileSystem::exists(logPath(true)));
    EXPECT_EQ(host.threadsStarted(), 0U);
    EXPECT_EQ(host.controlHandler.load(), nullptr);
    EXPECT_EQ(host.consoleAttachments, 3);
}

TEST_F(RegistrationCommands, WorkBesideARunningBridge) {
    host.instance = SingleInstance::AlreadyRunning;
    EXPECT_EQ(run({"--register"}), 0);
    EXPECT_EQ(output, "Registered in 2 MSFS EXE.xml file(s).\n");
}

TEST_F(RegistrationCommands, AreIgnoredInCapitals) {
    host.instance = SingleInstance::AlreadyRunning;
    EXPECT_EQ(run({"--REGISTER", "--List-Exe-Xml"}), 0);
    EXPECT_EQ(output, "");
    EXPECT_EQ(contentOf(boxed), "(absent)");
}

} // namespace
