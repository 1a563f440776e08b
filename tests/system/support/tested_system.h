#pragma once

#include <string>
#include <vector>

/// Which build of the bridge the tests run, and how it reaches the simulator. The environment variable
/// BRIDGE_TEST_SYSTEM chooses: "linux" (the default); or the Windows build under Wine, whose own HID stack then carries
/// the same boards: "windows-dll" with a SimConnect.dll beside it, "windows-tcp" and "windows-pipe" with none.
namespace TestedSystem {

bool isWindows();
bool hasDll();
bool overPipe();

/// The programs of the tested build, as paths of this machine.
std::string bridge();
std::string simulator();
std::string vantrel();
std::string simConnectDll();

/// What runs a program of the tested build: its path and arguments, behind Wine's loader where it needs that.
std::vector<std::string> command(const std::string& program, const std::vector<std::string>& arguments);

/// The per-machine folder, as a path of this machine.
std::string machineDataFolder();

/// A path of this machine as a program of the tested build sees it.
std::string pathSeenByBridge(const std::string& path);

} // namespace TestedSystem
