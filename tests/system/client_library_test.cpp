// A SimConnect.dll that can't be used, beside the program: it says why, and goes without.

#include "tests/system/support/bridge_test.h"

#include <filesystem>

namespace {

class WindowsClientLibrary : public BridgeTest {
protected:
    void SetUp() override {
        plugBoard(model());
        startSimulator();
        installation = std::make_unique<BridgeInstallation>(configuration.files(), simulator->port());
        std::filesystem::remove(dll());
    }

    std::string dll() const { return installation->path("SimConnect.dll"); }

    void expectToGoWithoutFor(const std::string& reason) {
        startBridge();
        ASSERT_TRUE(bridge->waitForLog("MobiFlight client registered"));
        EXPECT_EQ(bridge->countInLog("[WARN] " + TestedSystem::pathSeenByBridge(dll()) + " can't be used: " + reason),
                  1U);
        EXPECT_EQ(bridge->countInLog("; using the built-in SimConnect client\n"), 1U);
        boards[0]->panel.press(Controls::button);
        EXPECT_TRUE(waitForRpn("(>H:BUTTON_PRESS)"));
    }
};

/// The first bytes of a library for 32-bit programs.
std::string headOf32Bits() {
    std::string bytes(512, '\0');
    bytes.replace(0, 2, "MZ");
    bytes[0x3C] = 0x40;
    bytes.replace(0x40, 2, "PE");
    // The processor: Intel 386.
    bytes[0x44] = 0x4C;
    bytes[0x45] = 0x01;
    return bytes;
}

} // namespace

TEST_F(WindowsClientLibrary, ThatIsNoLibraryIsDoneWithout) {
    installation->write("SimConnect.dll", "This is a download page, not a library.\n");
    expectToGoWithoutFor("the file is damaged, or no Windows library (error ");
}

TEST_F(WindowsClientLibrary, For32BitProgramsIsDoneWithout) {
    installation->write("SimConnect.dll", headOf32Bits());
    expectToGoWithoutFor("it is made for 32-bit programs, and this is a 64-bit one (error ");
}

TEST_F(WindowsClientLibrary, ThatLacksAnOperationIsDoneWithout) {
    installProgram(TestedSystem::incompleteDll(), dll());
    expectToGoWithoutFor("it lacks the function ");
}
