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

/// One or more, in the order in which a client tries them.
using SimConnectEndpoints = std::vector<SimConnectEndpoint>;

/// The pipe that the simulator makes for local clients.
inline constexpr std::string_view simConnectPipe = R"(Microsoft Flight Simulator\SimConnect)";

/// The configuration index that means the local simulator and ignores SimConnect.cfg.
constexpr std::uint32_t simConnectLocalIndex = 0xFFFFFFFFU;

/// This machine's simulator: on its pipe where the system has pipes, else by TCP.
SimConnectEndpoints localSimConnectEndpoints();

/// Reads the endpoints of a configuration index from the text of a SimConnect.cfg. It is an INI file whose section
/// [SimConnect] is index 0 and [SimConnect.N] index N. Each of the keys may be missing: Protocol (Pipe, Ipv4, Ipv6,
/// Auto), Address, and Port, which for a pipe is its name. Auto, the default, is the pipe if the address is this
/// machine's, then IPv6, then IPv4; with a Port that isn't a number, it is the pipe alone. Sections and keys match in
/// any case; of duplicates, the first applies.
///
/// simConnectInvalidArgument: there is no such section. simConnectFail: there is one, but it gives no endpoint, because
/// of an unknown protocol or an invalid port or pipe host. Both leave `endpoints` unchanged.
SimConnectResult parseSimConnectCfg(std::string_view text, std::uint32_t configIndex, SimConnectEndpoints& endpoints);

/// Reads them from the first SimConnect.cfg in these folders. Without one, or with simConnectLocalIndex, they are the
/// local simulator's.
SimConnectResult findSimConnectEndpoints(const std::vector<std::string>& folders, std::uint32_t configIndex,
                                         SimConnectEndpoints& endpoints);
