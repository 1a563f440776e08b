// The simulator's EXE.xml files, listed and edited by the executable itself.

#include "tests/windows/installed_bridge.h"
#include "tests/windows/test_console.h"

#include <gtest/gtest.h>

namespace {

/// Has the bridge look for the simulator in a folder of the test's own, whose name holds byte 0x80.
class Registration : public testing::Test {
protected:
    Registration() {
        setVariable("APPDATA", bridge.folder);
        setVariable("LOCALAPPDATA", "");
    }
    ~Registration() override {
        setVariable("APPDATA", appDataBefore);
        setVariable("LOCALAPPDATA", localAppDataBefore);
    }

    std::string addSimulator() const {
        const std::string name = "Microsoft Flight Simulator/EXE.xml";
        bridge.write(name, R"(<?xml version="1.0" encoding="Windows-1252"?><SimBase.Document Type="Launch">)"
                           R"(<Descr>Launch</Descr></SimBase.Document>)");
        return bridge.folder + "\\Microsoft Flight Simulator\\EXE.xml";
    }

    /// A simulator whose list can't be written: a folder is in its place.
    std::string addFailingSimulator() const {
        const std::string path = bridge.folder + "\\Microsoft Flight Simulator\\EXE.xml";
        FileSystem::makeFolders(path);
        return path;
    }

    static std::string failureOf(const std::string& path) {
        return "EXE.xml update failed after 0 file(s): Failed to open for write: " + path + "\r\n";
    }

    /// Standard output of a run with these options, which must end with 0.
    std::string outputOf(const std::string& options) const {
        ChildPipe output;
        EXPECT_EQ(bridge.start(options, {console.input, output.writeEnd, console.output})->exitCode(), 0U);
        return output.readAll();
    }

    const InstalledBridge bridge{"E\x80ro"};
    const TestConsole console;

private:
    static std::string variable(const char* name) {
        std::array<char, 1000> value{};
        GetEnvironmentVariableA(name, value.data(), static_cast<DWORD>(value.size()));
        return value.data();
    }
    static void setVariable(const char* name, const std::string& value) {
        SetEnvironmentVariableA(name, value.empty() ? nullptr : value.c_str());
    }

    const std::string appDataBefore = variable("APPDATA");
    const std::string localAppDataBefore = variable("LOCALAPPDATA");
};

TEST_F(Registration, ListGoesWhereOutputIsRedirectedToByteForByte) {
    const std::string path = addSimulator();
    EXPECT_EQ(outputOf("--list-exe-xml"), path + "\r\n");
    EXPECT_EQ(console.screen(), "");
}

TEST_F(Registration, ListGoesIntoTheFileThatOutputIsRedirectedTo) {
    const std::string path = addSimulator();
    const HANDLE file = bridge.createFile("list.txt");
    EXPECT_EQ(bridge.start("--list-exe-xml", {console.input, file, console.output})->exitCode(), 0U);
    CloseHandle(file);
    EXPECT_EQ(bridge.contentOf("list.txt"), path + "\r\n");
    EXPECT_EQ(console.screen(), "");
}

TEST_F(Registration, FailureGoesIntoTheFileThatErrorsAreRedirectedTo) {
    const std::string path = addFailingSimulator();
    const HANDLE file = bridge.createFile("errors.txt");
    EXPECT_EQ(bridge.start("--register", {console.input, console.output, file})->exitCode(), 1U);
    CloseHandle(file);
    EXPECT_EQ(bridge.contentOf("errors.txt"), failureOf(path));
    EXPECT_EQ(console.screen(), "");
}

TEST_F(Registration, FailureGoesIntoThePipeThatErrorsAreRedirectedTo) {
    const std::string path = addFailingSimulator();
    ChildPipe errors;
    EXPECT_EQ(bridge.start("--register", {console.input, console.output, errors.writeEnd})->exitCode(), 1U);
    EXPECT_EQ(errors.readAll(), failureOf(path));
    EXPECT_EQ(console.screen(), "");
}

TEST_F(Registration, ListGoesToTheConsoleOtherwise) {
    EXPECT_EQ(bridge.start("--list-exe-xml", console.streams())->exitCode(), 0U);
    EXPECT_TRUE(console.shows("No MSFS installations detected.")) << console.screen();
}

TEST_F(Registration, EntersThePathOfTheExecutableByteForByte) {
    const std::string path = addSimulator();
    EXPECT_EQ(outputOf("--register"), "Registered in 1 MSFS EXE.xml file(s).\r\n");
    std::string text;
    ASSERT_TRUE(FileSystem::readFile(path, text));
    EXPECT_NE(text.find(bridge.executable), std::string::npos) << text;
    EXPECT_EQ(outputOf("--unregister"), "Unregistered from 1 MSFS EXE.xml file(s).\r\n");
    ASSERT_TRUE(FileSystem::readFile(path, text));
    EXPECT_EQ(text.find(bridge.executable), std::string::npos) << text;
}

TEST_F(Registration, ListBesideRegisterChangesNothing) {
    const std::string path = addSimulator();
    std::string before;
    std::string after;
    ASSERT_TRUE(FileSystem::readFile(path, before));
    EXPECT_EQ(outputOf("--register --list-exe-xml"), path + "\r\n");
    ASSERT_TRUE(FileSystem::readFile(path, after));
    EXPECT_EQ(after, before);
}

} // namespace
