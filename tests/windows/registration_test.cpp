// The simulator's EXE.xml files, listed and edited by the executable itself.

#include "tests/windows/installed_bridge.h"
#include "tests/windows/test_console.h"

#include <gtest/gtest.h>

namespace {

/// Has the bridge look for the simulator in a folder of the test's own, whose name contains byte 0x80.
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

    void addSimulator() const {
        bridge.write("Microsoft Flight Simulator/EXE.xml",
                     R"(<?xml version="1.0" encoding="Windows-1252"?><SimBase.Document Type="Launch">)"
                     R"(<Descr>Launch</Descr></SimBase.Document>)");
    }

    bool entersTheExecutable() const {
        return bridge.contentOf("Microsoft Flight Simulator/EXE.xml").find(bridge.executable) != std::string::npos;
    }

    /// Standard output of a run with these options, which must end with 0.
    std::string outputOf(const std::string& options) const {
        ChildPipe output;
        EXPECT_EQ(bridge.start(options, {console.input, output.writeEnd, console.output})->exitCode(), 0U);
        return output.readAll();
    }

    const InstalledBridge bridge{"E\x80ro"};
    const std::string list = bridge.folder + "\\Microsoft Flight Simulator\\EXE.xml";
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
    addSimulator();
    EXPECT_EQ(outputOf("--list-exe-xml"), list + "\r\n");
    EXPECT_EQ(console.screen(), "");
}

TEST_F(Registration, ListGoesToTheConsoleWhereNothingIsRedirected) {
    EXPECT_EQ(bridge.start("--list-exe-xml", console.streams())->exitCode(), 0U);
    EXPECT_TRUE(console.shows("No MSFS installations detected.")) << console.screen();
}

TEST_F(Registration, FailureGoesWhereErrorsAreRedirectedTo) {
    // A folder in a file's place can't be written.
    FileSystem::makeFolders(list);
    const HANDLE file = bridge.createFile("errors.txt");
    EXPECT_EQ(bridge.start("--register", {console.input, console.output, file})->exitCode(), 1U);
    CloseHandle(file);
    EXPECT_EQ(bridge.contentOf("errors.txt"),
              "EXE.xml update failed after 0 file(s): Failed to open for write: " + list + "\r\n");
    EXPECT_EQ(console.screen(), "");
}

TEST_F(Registration, EntersThePathOfTheExecutableByteForByte) {
    addSimulator();
    EXPECT_EQ(outputOf("--register"), "Registered in 1 MSFS EXE.xml file(s).\r\n");
    EXPECT_TRUE(entersTheExecutable());
    EXPECT_EQ(outputOf("--unregister"), "Unregistered from 1 MSFS EXE.xml file(s).\r\n");
    EXPECT_FALSE(entersTheExecutable());
}

} // namespace
