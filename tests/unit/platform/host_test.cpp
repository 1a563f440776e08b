#include "platform/file_system.h"
#include "platform/platform.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <optional>
#include <random>
#include <string>
#include <thread>

namespace {

using namespace std::chrono_literals;

const Host host = systemPlatform().host;

std::string uniqueName() {
    std::random_device random;
    return "Local\\bridge-test-" + std::to_string(random()) + "-" + std::to_string(random());
}

TEST(SystemPlatform, FillsEveryRecord) {
    const Platform platform = systemPlatform();
    const HidTransport& hid = platform.hid;
    EXPECT_TRUE(hid.enumerate && hid.open && hid.close && hid.attributes && hid.serialNumber && hid.getFeature);
    EXPECT_TRUE(hid.makeReader && hid.cancelReads && hid.write && hid.setOutputReport);
    const SimConnectLibrary& library = platform.simConnect;
    EXPECT_TRUE(library.open && library.close && library.callDispatch && library.addToDataDefinition);
    EXPECT_TRUE(library.requestDataOnSimObject && library.mapClientEventToSimEvent && library.transmitClientEvent);
    EXPECT_TRUE(library.mapClientDataNameToId && library.addToClientDataDefinition && library.requestClientData);
    EXPECT_TRUE(library.setClientData);
    const DeviceNotificationSource& source = platform.deviceNotifications;
    EXPECT_TRUE(source.setUp && source.run && source.tearDown && source.requestEnd);
    EXPECT_TRUE(host.findProcess && host.executablePath && host.commonDataFolder && host.environmentVariable);
    EXPECT_TRUE(host.acquireSingleInstance && host.attachConsole && host.installControlHandler);
    EXPECT_TRUE(host.sleepFor && host.now && host.startThread);
}

TEST(SystemPlatform, ItsSimConnectLibraryAnswers) {
    const SimConnectLibrary library = systemPlatform().simConnect;
    EXPECT_LT(library.open(nullptr, "test", nullptr, 0, nullptr, 0), 0);
    EXPECT_LT(library.close(nullptr), 0);
}

TEST(HostFindProcess, VisitsEveryProcessByItsNameWithoutFolder) {
    const std::string ownName = FileSystem::fileName(host.executablePath());
    bool visitedSelf = false;
    EXPECT_FALSE(host.findProcess([&](std::string_view name) {
        EXPECT_FALSE(name.empty());
        EXPECT_EQ(name.find_first_of("\\/"), std::string_view::npos) << name;
        visitedSelf = visitedSelf || name == ownName;
        return false;
    }));
    EXPECT_TRUE(visitedSelf);
}

TEST(HostFindProcess, StopsAtTheFirstMatch) {
    int visits = 0;
    EXPECT_TRUE(host.findProcess([&](std::string_view) { return ++visits == 1; }));
    EXPECT_EQ(visits, 1);
}

TEST(HostPaths, AreAbsolute) {
    const std::string path = host.executablePath();
    EXPECT_TRUE(FileSystem::isAbsolute(path)) << path;
    EXPECT_TRUE(FileSystem::exists(path)) << path;
    EXPECT_TRUE(FileSystem::fileName(path).starts_with("platform-tests")) << path;
    EXPECT_TRUE(FileSystem::isAbsolute(host.commonDataFolder())) << host.commonDataFolder();
}

TEST(HostEnvironmentVariable, IsNoneWhenUnset) {
    EXPECT_NE(host.environmentVariable("PATH").value_or(""), "");
    EXPECT_EQ(host.environmentVariable("BRIDGE_TEST_NO_SUCH_VARIABLE"), std::nullopt);
}

TEST(HostAcquireSingleInstance, OnlyTheFirstTakerOfANameGetsIt) {
    const std::string name = uniqueName();
    EXPECT_EQ(host.acquireSingleInstance(name), SingleInstance::Acquired);
    EXPECT_EQ(host.acquireSingleInstance(name), SingleInstance::AlreadyRunning);
    EXPECT_EQ(host.acquireSingleInstance(name), SingleInstance::AlreadyRunning);
    EXPECT_EQ(host.acquireSingleInstance(uniqueName()), SingleInstance::Acquired);
    EXPECT_EQ(host.acquireSingleInstance(std::string(70000, 'x')), SingleInstance::Unavailable) << "too long";
}

TEST(HostSleepFor, SleepsForAtLeastTheDuration) {
    const std::int64_t begin = host.now();
    host.sleepFor(20ms);
    // Some systems wake a little early by their coarse clock; nanoseconds and milliseconds would be far apart.
    EXPECT_GE(host.now() - begin, 18'000'000);
    // A sleep of an hour would hang the test until it is killed.
    host.sleepFor(0ms);
    host.sleepFor(-3600000ms);
}

TEST(HostStartThread, RunsTheBodyOnAThreadOfItsOwn) {
    std::thread::id other = std::this_thread::get_id();
    host.startThread([&] { other = std::this_thread::get_id(); }).join();
    EXPECT_NE(other, std::this_thread::get_id());
}

TEST(HostAttachConsole, LeavesRedirectedOutputAlone) {
    testing::internal::CaptureStdout();
    host.attachConsole();
    std::printf("still here");
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "still here");
}

} // namespace
