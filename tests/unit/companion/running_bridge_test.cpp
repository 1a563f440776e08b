#include "companion/setup/running_bridge.h"

#include "companion/setup/child_process.h"
#include "tests/support/temp_folder.h"
#include "tests/support/wait_until.h"

namespace {

constexpr std::int64_t bridgeId = 7;

/// The shell, which waits for its input, under a name of its own.
std::string waitingProgram(const TempFolder& folder) {
    const std::optional<std::string> shell = systemPlatform().host.environmentVariable("ComSpec");
    const std::string program = folder.path(FileSystem::fileName(folder.path()) + ".exe");
    std::string error;
    EXPECT_TRUE(FileSystem::copyFile(shell.value_or("/bin/sh"), program, error)) << error;
    return program;
}

std::optional<ProcessFacts> processNamed(const std::string& name) {
    for (const ProcessFacts& process : systemProcesses().list()) {
        if (process.name == name) {
            return process;
        }
    }
    return std::nullopt;
}

} // namespace

TEST(RunningBridge, IsTheSimulatorsIfThatIsItsParent) {
    const std::vector<std::pair<std::vector<ProcessFacts>, std::optional<RunningBridge>>> cases{
        {{}, std::nullopt},
        {{{5, 1, "FlightSimulator.exe"}}, std::nullopt},
        {{{bridgeId, 1, "VantrelBridgeHID"}}, RunningBridge{bridgeId, false}},
        {{{5, 1, "FlightSimulator.exe"}, {bridgeId, 1, "VantrelBridgeHID.exe"}}, RunningBridge{bridgeId, false}},
        {{{5, 1, "FlightSimulator.exe"}, {bridgeId, 5, "vantrelbridgehid.EXE"}}, RunningBridge{bridgeId, true}},
        {{{bridgeId, 5, "VantrelBridgeHID"}, {5, 1, "FlightSimulator2024.exe"}}, RunningBridge{bridgeId, true}},
        {{{5, 1, "FlightSimulator2020"}, {bridgeId, 5, "VantrelBridgeHID"}}, RunningBridge{bridgeId, false}},
        {{{bridgeId, 5, "FlightSimulator"}, {5, 1, "FlightSimulator"}}, std::nullopt},
        {{{5, 1, "FlightSimulator"}, {bridgeId, 5, "VantrelBridgeHID"}, {9, 1, "VantrelBridgeHID"}},
         RunningBridge{bridgeId, true}},
        {{{5, 1, "FlightSimulator"}, {9, 1, "VantrelBridgeHID"}, {bridgeId, 5, "VantrelBridgeHID"}},
         RunningBridge{bridgeId, true}},
    };
    for (const auto& [processes, bridge] : cases) {
        EXPECT_EQ(findBridge(processes), bridge);
    }
}

TEST(ProcessControl, NamesAProcessWithItsParentAndEndsIt) {
    const TempFolder folder;
    const std::string program = waitingProgram(folder);
    std::string error;
    const auto child = ChildProcess::start(
        program, {}, [](const std::string&) {}, error);
    ASSERT_NE(child, nullptr) << error;
    const std::string name = FileSystem::fileName(program);
    ASSERT_TRUE(waitUntil([&] { return processNamed(name).has_value(); }));
    const ProcessFacts process = *processNamed(name);
    const std::string ownName = FileSystem::fileName(systemPlatform().host.executablePath());
    bool isOurChild = false;
    for (const ProcessFacts& other : systemProcesses().list()) {
        isOurChild = isOurChild || (other.id == process.parent && other.name == ownName);
    }
    EXPECT_TRUE(isOurChild);
    EXPECT_EQ(systemProcesses().end(process.id), "");
    EXPECT_TRUE(waitUntil([&] { return !child->running(); }));
}
