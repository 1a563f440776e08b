#pragma once

#include "platform/platform.h"

#include <string>

// What the program does instead of running the bridge, for a person or an installer: each prints its result on the
// standard streams and returns the process's exit code. No log is open meanwhile.

/// Prints where EXE.xml files are or may be put on this machine.
int listExeXmlFiles(const Host& host);

/// The command line with which the simulator starts a registered program.
std::string registeredArguments(const std::string& configPath);

/// Makes the simulator start this program with that configuration file, whose path is passed on unchanged.
int registerProgram(const Host& host, const std::string& configPath);

int unregisterProgram(const Host& host);
