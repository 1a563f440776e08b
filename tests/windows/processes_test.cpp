// The list of running programs, by which the bridge knows that a simulator is there.

#include "platform/platform.h"
#include "tests/windows/installed_bridge.h"

#include <gtest/gtest.h>

namespace {

bool isListed(const std::string& wanted) {
    return systemPlatform().host.findProcess([&](std::string_view name) { return name == wanted; });
}

class ProcessList : public testing::Test {
protected:
    ProcessList() { bridge.configure(); }

    /// The bridge under another program's name.
    std::unique_ptr<ChildProcess> startAs(const std::wstring& name) const {
        const std::filesystem::path copy = FileSystem::fromBytes(bridge.folder) / name;
        std::filesystem::copy_file(FileSystem::fromBytes(bridge.executable), copy);
        return std::make_unique<ChildProcess>(L'"' + copy.wstring() + L'"', Streams(), DETACHED_PROCESS);
    }

    InstalledBridge bridge;
};

TEST_F(ProcessList, HoldsAProgramByItsNameAsWrittenAsLongAsItRuns) {
    EXPECT_FALSE(isListed("flightSIMULATOR.exe"));
    {
        const auto process = startAs(L"flightSIMULATOR.exe");
        EXPECT_TRUE(waitUntil([] { return isListed("flightSIMULATOR.exe"); }));
        EXPECT_FALSE(isListed("FlightSimulator.exe"));
        EXPECT_TRUE(process->isRunning());
    }
    EXPECT_TRUE(waitUntil([] { return !isListed("flightSIMULATOR.exe"); }));
}

TEST_F(ProcessList, HasNamesOutsideTheCodePageInUtf8) {
    const auto process = startAs(L"\u0142\u6771.exe");
    EXPECT_TRUE(waitUntil([] { return isListed("\xC5\x82\xE6\x9D\xB1.exe"); }));
}

} // namespace
