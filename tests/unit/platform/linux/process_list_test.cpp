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
#include <utility>
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

std::vector<std::string> namesIn(const std::string& procFolder) {
    std::vector<std::string> names;
    EXPECT_FALSE(findProcessIn(procFolder, [&](std::string_view name) {
        names.emplace_back(name);
        return false;
    }));
    return names;
}

/// The content of a process's cmdline.
std::string commandLine(const std::string& first, const std::string& second) {
    return first + std::string(1, '\0') + second + std::string(1, '\0');
}

TEST(ProgramName, IsTheLastComponentBehindEitherSeparator) {
    const std::pair<std::string, std::string> cases[] = {
        {"/usr/bin/program", "program"},
        {"Z:\\games\\FlightSimulator.exe", "FlightSimulator.exe"},
        {"C:\\games/FlightSimulator.exe", "FlightSimulator.exe"},
        {"/mnt/my\\games", "games"},
        {"FlightSimulator.exe", "FlightSimulator.exe"},
        {"/usr/bin/", ""},
        {"", ""},
    };
    for (const auto& [argument, name] : cases) {
        EXPECT_EQ(programName(argument), name) << argument;
    }
}

TEST(FindProcessIn, GivesTheFirstArgumentsNameOfEachNumberedFolder) {
    const TempFolder proc;
    proc.write("12/cmdline", commandLine("Z:\\Flight Simulator\\My Sim.exe", "/home/FlightSimulator.exe"));
    proc.write("2/cmdline", "");
    proc.makeFolder("3");
    proc.write("4/cmdline", std::string(1, '\0'));
    proc.write("self/cmdline", commandLine("/bin/self", ""));
    proc.write("12x/cmdline", commandLine("/bin/odd", ""));
    proc.write("uptime", "1");
    EXPECT_EQ(namesIn(proc.path()), std::vector<std::string>{"My Sim.exe"});
}

TEST(FindProcessIn, FindsNothingInAFolderThatCannotBeRead) {
    const TempFolder folder;
    EXPECT_EQ(namesIn(folder.path("absent")), std::vector<std::string>());
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

TEST(HostFindProcessOnLinux, DoesNotFindAProcessThatHasEnded) {
    const Child child("/bin/sleep", "Z:\\games\\TestGoneSimulator.exe", "0");
    child.waitForEnd();
    EXPECT_FALSE(isRunning("TestGoneSimulator.exe"));
}

} // namespace
