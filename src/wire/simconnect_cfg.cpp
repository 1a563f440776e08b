#include "wire/simconnect_cfg.h"

#include "text/ascii.h"
#include "wire/pipe.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <utility>

namespace {

// The simulator gives its IPv6 entry the next port.
constexpr std::uint16_t defaultIpv6Port = 501;
constexpr std::string_view sectionName = "simconnect";
constexpr std::string_view blanks = " \t\r";

using Keys = std::map<std::string, std::string, std::less<>>;

template <typename Number>
std::optional<Number> wholeNumber(std::string_view text) {
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return number;
}

// The configuration index in a section's name without its brackets. None: not one of SimConnect's sections.
std::optional<std::uint32_t> sectionIndex(std::string_view name) {
    const std::string lower = lowerCased(trimmed(name, blanks));
    if (lower == sectionName) {
        return 0;
    }
    if (lower.starts_with(sectionName) && lower.size() > sectionName.size() && lower[sectionName.size()] == '.') {
        return wholeNumber<std::uint32_t>(std::string_view(lower).substr(sectionName.size() + 1));
    }
    return std::nullopt;
}

// Calls `visit` with each line, trimmed, without its end.
template <typename Visit>
void forEachLine(std::string_view text, const Visit& visit) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(byteOrderMark)) {
        text.remove_prefix(byteOrderMark.size());
    }
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        visit(trimmed(text.substr(0, end), blanks));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

void readKey(std::string_view line, Keys& keys) {
    const std::size_t equals = line.find('=');
    if (!line.starts_with(';') && equals != std::string_view::npos) {
        keys.try_emplace(lowerCased(trimmed(line.substr(0, equals), blanks)), trimmed(line.substr(equals + 1), blanks));
    }
}

// The keys of a configuration index. None: no such section.
std::optional<Keys> sectionKeys(std::string_view text, std::uint32_t configIndex) {
    std::optional<Keys> keys;
    bool inside = false;
    forEachLine(text, [&](std::string_view line) {
        if (line.starts_with('[')) {
            inside = !keys && sectionIndex(line.substr(1, line.find(']') - 1)) == configIndex;
            if (inside) {
                keys.emplace();
            }
        } else if (inside) {
            readKey(line, *keys);
        }
    });
    return keys;
}

std::string valueOf(const Keys& keys, std::string_view name) {
    const auto found = keys.find(name);
    return found == keys.end() ? std::string() : found->second;
}

// In a pipe's path a dot is the local machine.
bool isLocal(std::string_view address) {
    return address.empty() || address == ".";
}

// What a section says about an endpoint besides its protocol.
struct Place {
    std::string address;
    std::string port;
};

using Endpoint = std::optional<SimConnectEndpoint>;

Endpoint tcpEndpoint(const Place& place, AddressFamily family) {
    SimConnectEndpoint endpoint;
    endpoint.family = family;
    if (family == AddressFamily::Ipv6) {
        endpoint.address = "::1";
        endpoint.port = defaultIpv6Port;
    }
    if (!isLocal(place.address)) {
        endpoint.address = place.address;
    }
    if (!place.port.empty()) {
        endpoint.port = wholeNumber<std::uint16_t>(place.port).value_or(0);
    }
    return endpoint.port == 0 ? std::nullopt : Endpoint(endpoint);
}

// TCP's names for this machine. In a pipe's path they would send the opening of a local pipe through the network.
bool isLoopback(std::string_view address) {
    return address == "127.0.0.1" || address == "::1" || lowerCased(address) == "localhost";
}

bool isThisMachine(std::string_view address) {
    return isLocal(address) || isLoopback(address);
}

Endpoint pipeEndpoint(const Place& place) {
    // A separator in the host would make it a different path, maybe that of a file.
    if (place.address.find_first_of("/\\") != std::string::npos) {
        return std::nullopt;
    }
    SimConnectEndpoint endpoint;
    endpoint.address = isThisMachine(place.address) ? "." : place.address;
    endpoint.port = 0;
    endpoint.pipe = place.port.empty() ? simConnectPipe : std::string_view(place.port);
    return endpoint;
}

SimConnectEndpoints endpointsOf(std::string_view protocol, const Place& place) {
    const std::string lower = lowerCased(protocol);
    const bool all = lower.empty() || lower == "auto";
    SimConnectEndpoints endpoints;
    const auto add = [&](const Endpoint& endpoint) {
        if (endpoint) {
            endpoints.push_back(*endpoint);
        }
    };
    // Opening another machine's pipe may take as long as the system likes, so only an explicit Protocol=Pipe tries it.
    if (lower == "pipe" || (all && isThisMachine(place.address))) {
        add(pipeEndpoint(place));
    }
    if (all || lower == "ipv6") {
        add(tcpEndpoint(place, AddressFamily::Ipv6));
    }
    if (all || lower == "ipv4") {
        add(tcpEndpoint(place, AddressFamily::Ipv4));
    }
    return endpoints;
}

} // namespace

SimConnectEndpoints localSimConnectEndpoints() {
    const SimConnectEndpoint byTcp;
    return {havePipes() ? *pipeEndpoint({}) : byTcp};
}

SimConnectResult parseSimConnectCfg(std::string_view text, std::uint32_t configIndex, SimConnectEndpoints& endpoints) {
    const std::optional<Keys> keys = sectionKeys(text, configIndex);
    if (!keys) {
        return simConnectInvalidArgument;
    }
    SimConnectEndpoints found =
        endpointsOf(valueOf(*keys, "protocol"), {valueOf(*keys, "address"), valueOf(*keys, "port")});
    if (found.empty()) {
        return simConnectFail;
    }
    endpoints = std::move(found);
    return simConnectOk;
}

SimConnectResult findSimConnectEndpoints(const std::vector<std::string>& folders, std::uint32_t configIndex,
                                         SimConnectEndpoints& endpoints) {
    endpoints = localSimConnectEndpoints();
    if (configIndex == simConnectLocalIndex) {
        return simConnectOk;
    }
    for (const std::string& folder : folders) {
        // An unknown folder is empty. Its file name must not become one in the root.
        std::ifstream file(folder + "/SimConnect.cfg", std::ios::binary);
        if (!folder.empty() && file) {
            const std::string text{std::istreambuf_iterator<char>(file), {}};
            return parseSimConnectCfg(text, configIndex, endpoints);
        }
    }
    return simConnectOk;
}
