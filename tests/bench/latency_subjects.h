#pragma once

#include <cstdint>
#include <string>

/// The processes that latency-bench measures. Each gets reports of a board as packets of a Unix socket, and sends
/// commands to the port on loopback until the socket's other end closes or, for the bridge, SIGTERM comes. Both return
/// an exit code.

/// What no bridge can beat: reads a report and sends the bytes that the bridge would send.
int runFloor(int reportSocket, std::uint16_t port);

/// The bridge. With port 0 there is no simulator.
int runBridge(int reportSocket, std::uint16_t port, const std::string& configPath);
