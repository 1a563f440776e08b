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

    /// Makes the installation's folder and gives the path of its file.
    std::string install(const std::string& data, const std::string& simulator) const {
        std::string path = FileSystem::toOwnSeparators(folder.path(data) + "\\" + simulator + "\\EXE.xml");
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

    /// The content of a new file that starts the program with that configuration.
    std::string registered(const std::string& configuration) const {
        return ExeXmlRegistrar::applyRegistration("", "VantrelBridgeHID", host.executable,
                                                  "--config \"" + configuration + "\"");
    }

    std::string boxed;
    std::string boxed2024;
    std::string output;
    std::string errorOutput;
};

TEST_F(RegistrationCommands, ListPrintsEachPathOnALineAndWinsOverTheOthers) {
    EXPECT_EQ(run({"--register", "--unregister", "--console", "--list-exe-xml"}), 0);
    EXPECT_EQ(output, boxed + "\n" + boxed2024 + "\n");
    EXPECT_EQ(errorOutput, "");
    EXPECT_EQ(contentOf(boxed), "(absent)");
}

TEST_F(RegistrationCommands, AMissingSimulatorIsNoFailure) {
    host.variables.clear();
    EXPECT_EQ(run({"--list-exe-xml"}), 0);
    EXPECT_EQ(output, "No MSFS installations detected.\n");
    EXPECT_EQ(run({"--register"}), 0);
    EXPECT_EQ(output, "Registered in 0 MSFS EXE.xml file(s).\n");
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

TEST_F(RegistrationCommands, RegisterWinsOverUnregisterAndEntersTheExecutableWithItsConfigurationAlone) {
    EXPECT_EQ(run({"--console", "--hid-trace", "--unregister", "--register", "--config", "../my <own>.json"}), 0);
    EXPECT_EQ(output, "Registered in 2 MSFS EXE.xml file(s).\n");
    EXPECT_EQ(errorOutput, "");
    EXPECT_EQ(contentOf(boxed), registered("../my <own>.json"));
    EXPECT_EQ(contentOf(boxed2024), contentOf(boxed));
}

TEST_F(RegistrationCommands, RegisterWithoutAConfigurationEntersTheOneThatTheSearchFinds) {
    const std::string perMachine = FileSystem::join(folder.path("data"), "VantrelBridge");
    for (const std::vector<const char*>& options : {std::vector{"--register"}, {"--register", "--config", ""}}) {
        run(options);
        EXPECT_EQ(contentOf(boxed), registered(FileSystem::join(perMachine, "config.json")));
        FileSystem::remove(boxed);
    }
}

TEST_F(RegistrationCommands, UnregisterRemovesTheEntry) {
    run({"--register"});
    EXPECT_EQ(run({"--unregister"}), 0);
    EXPECT_EQ(output, "Unregistered from 2 MSFS EXE.xml file(s).\n");
    EXPECT_EQ(errorOutput, "");
    EXPECT_EQ(contentOf(boxed).find("VantrelBridgeHID"), std::string::npos);
}

TEST_F(RegistrationCommands, AFileThatCannotBeWrittenGivesOneAndTheNumberOfThoseBefore) {
    FileSystem::makeFolders(boxed2024);
    EXPECT_EQ(run({"--register"}), 1);
    EXPECT_EQ(errorOutput, "EXE.xml update failed after 1 file(s): Failed to open for write: " + boxed2024 + "\n");
    EXPECT_EQ(output, "");
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

} // namespace
