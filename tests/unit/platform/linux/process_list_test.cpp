#include "platform/linux/process_list.h"

#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

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
        EXPECT_EQ(programNameIn(argument), name) << argument;
    }
}

TEST(FindProcessIn, GivesTheFirstArgumentsNameOfEachNumberedFolder) {
    const TempFolder proc;
    proc.write("12/cmdline", commandLine("Z:\\Flight Simulator\\My FlightSimulator2024.exe", "/home/other.exe"));
    // The kernel's own name, which it cuts.
    proc.write("12/comm", "My FlightSimula");
    // A process that has ended or is the kernel's own has no command line.
    proc.write("2/cmdline", "");
    proc.makeFolder("3");
    proc.write("4/cmdline", std::string(1, '\0'));
    proc.write("self/cmdline", commandLine("/bin/self", ""));
    proc.write("12x/cmdline", commandLine("/bin/odd", ""));
    proc.write("uptime", "1");
    EXPECT_EQ(namesIn(proc.path()), std::vector<std::string>{"My FlightSimulator2024.exe"});
}

TEST(FindProcessIn, FindsNothingInAFolderThatCannotBeRead) {
    const TempFolder folder;
    EXPECT_EQ(namesIn(folder.path("absent")), std::vector<std::string>());
}

} // namespace
