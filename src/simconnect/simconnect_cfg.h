#pragma once

#include "simconnect/simconnect_api.h"
#include "simconnect/socket.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Where a simulator listens.
struct SimConnectEndpoint {
    /// A literal address or a host's name.
    std::string address = "127.0.0.1";
    /// The simulator's own default for local clients.
    std::uint16_t port = 500;
    AddressFamily family = AddressFamily::Any;
};

/// The configuration index that asks for the local simulator, whatever SimConnect.cfg says.
constexpr std::uint32_t simConnectLocalIndex = 0xFFFFFFFFU;

/// Reads the endpoint of a configuration index from the text of a SimConnect.cfg: an INI file whose section
/// [SimConnect] is index 0 and [SimConnect.N] index N, with the keys Protocol (Ipv4, Ipv6, Auto, Pipe), Address and
/// Port, of which each may be missing. Sections and keys are found in any case; of two the first counts.
/// simConnectInvalidArgument: there is no such section. simConnectFail: there is one, but not of a kind that can be
/// reached from here (a pipe, an unknown protocol, a port that is none). `endpoint` is then unchanged.
SimConnectResult parseSimConnectCfg(std::string_view text, std::uint32_t configIndex, SimConnectEndpoint& endpoint);

/// Reads it from the first SimConnect.cfg in these folders. None there, or simConnectLocalIndex: the default endpoint.
SimConnectResult findSimConnectEndpoint(const std::vector<std::string>& folders, std::uint32_t configIndex,
                                        SimConnectEndpoint& endpoint);
