#pragma once

#include "simconnect/simconnect_api.h"
#include "wire/socket.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Where a simulator listens: by TCP, or on a pipe.
struct SimConnectEndpoint {
    /// A literal address or a host's name; of a pipe "." for this machine.
    std::string address = "127.0.0.1";
    /// The simulator's own default for local clients.
    std::uint16_t port = 500;
    AddressFamily family = AddressFamily::Any;
    /// The pipe's name, without "\\.\pipe\"; empty for TCP.
    std::string pipe = {};
};

/// One or more, in the order in which they are tried.
using SimConnectEndpoints = std::vector<SimConnectEndpoint>;

/// The pipe that the simulator makes for local clients.
inline constexpr std::string_view simConnectPipe = R"(Microsoft Flight Simulator\SimConnect)";

/// The configuration index that asks for the local simulator, whatever SimConnect.cfg says.
constexpr std::uint32_t simConnectLocalIndex = 0xFFFFFFFFU;

/// The simulator of this machine: on its pipe where there are pipes, else by TCP.
SimConnectEndpoints localSimConnectEndpoints();

/// Reads the endpoints of a configuration index from the text of a SimConnect.cfg: an INI file whose section
/// [SimConnect] is index 0 and [SimConnect.N] index N, with the keys Protocol (Pipe, Ipv4, Ipv6, Auto), Address and
/// Port, of which each may be missing. A pipe's Port is its name. Auto, also when Protocol is missing, is the pipe,
/// if the address is this machine's, then IPv6, then IPv4; a Port that is no number leaves only the pipe. Sections and
/// keys are found in any case; of two the first counts. simConnectInvalidArgument: there is no such section.
/// simConnectFail: there is one, but it tells nothing that can be reached (an unknown protocol, a port or a pipe's host
/// that is none). `endpoints` is then unchanged.
SimConnectResult parseSimConnectCfg(std::string_view text, std::uint32_t configIndex, SimConnectEndpoints& endpoints);

/// Reads them from the first SimConnect.cfg in these folders. None there, or simConnectLocalIndex: the local simulator.
SimConnectResult findSimConnectEndpoints(const std::vector<std::string>& folders, std::uint32_t configIndex,
                                         SimConnectEndpoints& endpoints);
