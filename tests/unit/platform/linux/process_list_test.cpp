#include "platform/linux/process_list.h"

#include "platform/platform.h"
#include "tests/support/temp_folder.h"
#include "tests/support/wait_until.h"

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>

#include <csignal>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

/// A program that runs until the end of the test.
class Child {
public:
    Child(const std::string& program, const std::string& firstArgument, const std::string& secondArgument) {
        std::string first = firstArgument;
        std::string second = secondArgument;
        char* arguments[] = {first.data(), second.data(), nullptr};
        char* environment[] = {nullptr};
        if (posix_spawn(&id, program.c_str(), nullptr, nullptr, arguments, environment) != 0) {
            throw std::runtime_error("can't start " + program);
        }
    }
    ~Child() {
        kill(id, SIGKILL);
        waitpid(id, nullptr, 0);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// Leaves it a process that has ended but is still listed.
    void waitForEnd() const {
        siginfo_t info{};
        waitid(P_PID, static_cast<id_t>(id), &info, WEXITED | WNOWAIT);
    }

    pid_t id = 0;
};

bool isRunning(const std::string& wanted) {
    return systemPlatform().host.findProcess([&](std::string_view name) { return name == wanted; });
}

std::vector<std::string> namesIn(const TempFolder& procFolder) {
    std::vector<std::string> names;
    EXPECT_FALSE(findProcessIn(procFolder.path(), [&](std::string_view name) {
        names.emplace_back(name);
        return false;
    }));
    return names;
}

std::string commandLine(const std::string& first, const std::string& second) {
    return first + std::string(1, '\0') + second + std::string(1, '\0');
}

TEST(ProgramName, IsTheLastComponentBehindEitherSeparator) {
    EXPECT_EQ(programName("/usr/bin/program"), "program");
    EXPECT_EQ(programName("Z:\\games\\FlightSimulator.exe"), "FlightSimulator.exe");
    EXPECT_EQ(programName("C:\\games/FlightSimulator.exe"), "FlightSimulator.exe");
    EXPECT_EQ(programName("/mnt/my\\games"), "games");
    EXPECT_EQ(programName("FlightSimulator.exe"), "FlightSimulator.exe");
    EXPECT_EQ(programName("/usr/bin/"), "");
    EXPECT_EQ(programName(""), "");
}

TEST(FindProcessIn, ReadsOnlyTheFirstArgument) {
    const TempFolder proc;
    proc.write("12/cmdline", commandLine("/usr/bin/editor", "/home/FlightSimulator.exe"));
    EXPECT_EQ(namesIn(proc), std::vector<std::string>{"editor"});
}

TEST(FindProcessIn, KeepsBlanksInAName) {
    const TempFolder proc;
    proc.write("12/cmdline", commandLine("Z:\\Flight Simulator\\My Sim.exe", "-x"));
    EXPECT_EQ(namesIn(proc), std::vector<std::string>{"My Sim.exe"});
}

TEST(FindProcessIn, PassesOverWhatHasNoCommandLine) {
    const TempFolder proc;
    proc.write("2/cmdline", "");
    proc.makeFolder("3");
    proc.write("4/cmdline", std::string(1, '\0'));
    EXPECT_EQ(namesIn(proc), std::vector<std::string>());
}

TEST(FindProcessIn, LooksOnlyAtNumberedFolders) {
    const TempFolder proc;
    proc.write("self/cmdline", commandLine("/bin/self", ""));
    proc.write("12x/cmdline", commandLine("/bin/odd", ""));
    proc.write("uptime", "1");
    EXPECT_EQ(namesIn(proc), std::vector<std::string>());
}

TEST(FindProcessIn, AFolderThatCannotBeReadHoldsNothing) {
    const TempFolder folder;
    EXPECT_FALSE(findProcessIn(folder.path("absent"), [](std::string_view) { return true; }));
}

TEST(HostFindProcessOnLinux, FindsAProgramByItsNameEvenBeyond15Characters) {
    const TempFolder folder;
    const std::string program = folder.path("TestFlightSimulator.exe");
    EXPECT_FALSE(isRunning("TestFlightSimulator.exe"));
    std::filesystem::copy_file("/bin/sleep", program);
    const Child child(program, program, "60");
    EXPECT_TRUE(waitUntil([] { return isRunning("TestFlightSimulator.exe"); }));
    EXPECT_FALSE(isRunning("TestFlightSimul"));
}

TEST(HostFindProcessOnLinux, FindsAWindowsPathInTheFirstArgument) {
    const Child child("/bin/sleep", "Z:\\games\\TestFlightSimulator2024.exe", "60");
    EXPECT_TRUE(waitUntil([] { return isRunning("TestFlightSimulator2024.exe"); }));
    EXPECT_FALSE(isRunning("Z:\\games\\TestFlightSimulator2024.exe"));
}

TEST(HostFindProcessOnLinux, AProcessThatHasEndedIsNotFound) {
    const Child child("/bin/sleep", "Z:\\games\\TestGoneSimulator.exe", "0");
    child.waitForEnd();
    EXPECT_FALSE(isRunning("TestGoneSimulator.exe"));
}

} // namespace
