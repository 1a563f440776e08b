#include "companion/doctor/simconnect_check.h"

#include "companion/doctor/xml_blocks.h"
#include "companion/guide/message_guide.h"
#include "platform/file_system.h"
#include "text/ascii.h"
#include "wire/pipe.h"

#include <algorithm>
#include <charconv>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

namespace {

/// Programs in Wine can't listen on ports below.
constexpr std::uint16_t firstFreePort = 1024;
constexpr const char* cfgName = "SimConnect.cfg";

std::string endpointText(const SimConnectEndpoint& endpoint) {
    return endpoint.pipe.empty() ? endpoint.address + " port " + std::to_string(endpoint.port)
                                 : "the simulator's pipe " + endpoint.pipe;
}

std::string endpointsText(const SimConnectEndpoints& endpoints) {
    std::string text;
    for (const SimConnectEndpoint& endpoint : endpoints) {
        text += (text.empty() ? "" : ", then ") + endpointText(endpoint);
    }
    return text;
}

bool isThisMachinesTcp(const SimConnectEndpoint& endpoint) {
    return endpoint.pipe.empty() && (endpoint.address == "127.0.0.1" || endpoint.address == "::1" ||
                                     lowerCased(endpoint.address) == "localhost");
}

bool offers(const SimConnectEntry& entry, const SimConnectEndpoint& endpoint) {
    const std::string protocol = lowerCased(entry.protocol);
    const bool isTcp = protocol == "ipv4" || protocol == "ipv6";
    return !entry.isDisabled && isTcp && entry.port == std::to_string(endpoint.port);
}

bool offersAny(const SimConnectXmlFacts& facts, const SimConnectEndpoint& endpoint) {
    return std::ranges::any_of(facts.entries, [&](const SimConnectEntry& entry) { return offers(entry, endpoint); });
}

/// Whether the bridge could connect there with an address of IPv4.
bool isUsable(const SimConnectEntry& entry, bool isInWine) {
    std::uint16_t port = 0;
    const char* const end = entry.port.data() + entry.port.size();
    const auto [read, error] = std::from_chars(entry.port.data(), end, port);
    return !entry.isDisabled && lowerCased(entry.protocol) == "ipv4" && error == std::errc() && read == end &&
           port >= (isInWine ? firstFreePort : 1);
}

/// Only TCP on this machine can be compared: another machine's file is elsewhere, and the pipe needs no entry.
void judgeOffer(const SimConnectXmlFacts& facts, const SimConnectCfgFacts& client, CheckTopic& topic) {
    const SimConnectEndpoints& endpoints = client.endpoints;
    const auto port = std::to_string(endpoints.front().port);
    if (!std::ranges::all_of(endpoints, isThisMachinesTcp)) {
        topic.good("simconnect-xml-good", facts.path);
    } else if (std::ranges::none_of(endpoints, [&](const auto& endpoint) { return offersAny(facts, endpoint); })) {
        topic.fault("simconnect-port-differs",
                    "the bridge connects to " + endpointsText(endpoints) + ", but " + facts.path +
                        " has no enabled entry for it",
                    "Add an IPv4 entry with this port there, or change the port in SimConnect.cfg.", client.writing);
    } else if (facts.isInWine && endpoints.front().port < firstFreePort) {
        topic.fault("simconnect-port-low", "a simulator in Wine can't listen on port " + port,
                    "Choose a port above 1023 in both " + facts.path + " and SimConnect.cfg.");
    } else {
        topic.good("simconnect-xml-good", facts.path + " offers port " + port);
    }
}

/// The first folder that the bridge looks into and this user may write into: a package puts the bridge where nobody
/// may.
std::string folderOfNewCfg(const Machine& machine) {
    const auto folder = std::ranges::find_if(machine.simConnectCfgFolders, [&machine](const std::string& each) {
        return !each.empty() && machine.canWriteInto(each);
    });
    return folder == machine.simConnectCfgFolders.end() ? "" : *folder;
}

} // namespace

std::string simConnectCfgText(const std::vector<SimConnectXmlFacts>& simulators) {
    std::set<std::string> ports;
    for (const SimConnectXmlFacts& simulator : simulators) {
        const auto usable = std::ranges::find_if(
            simulator.entries, [&](const SimConnectEntry& entry) { return isUsable(entry, simulator.isInWine); });
        if (usable != simulator.entries.end()) {
            ports.insert(usable->port);
        }
    }
    return ports.size() == 1 ? "[SimConnect]\nProtocol=IPv4\nAddress=127.0.0.1\nPort=" + *ports.begin() + '\n' : "";
}

SimConnectCfgFacts readSimConnectCfgFacts(const Machine& machine, const std::vector<SimConnectXmlFacts>& simulators) {
    SimConnectCfgFacts facts;
    for (const std::string& folder : machine.simConnectCfgFolders) {
        const std::string path = FileSystem::join(folder, cfgName);
        if (facts.path.empty() && !folder.empty() && FileSystem::existsOrFalse(path)) {
            facts.path = path;
        }
    }
    facts.result = findSimConnectEndpoints(machine.simConnectCfgFolders, 0, facts.endpoints);
    if (facts.result != simConnectOk) {
        facts.endpoints.clear();
    }
    const std::string text = simConnectCfgText(simulators);
    if (!text.empty() && !facts.path.empty()) {
        facts.writing = {"write-file", facts.path, text};
    } else if (const std::string folder = text.empty() ? "" : folderOfNewCfg(machine); !folder.empty()) {
        facts.writing = {"write-file", FileSystem::join(folder, cfgName), text};
    }
    return facts;
}

SimConnectXmlFacts readSimConnectXmlFacts(const SimulatorFolder& simulator) {
    SimConnectXmlFacts facts;
    facts.simulator = simulator.name;
    facts.path = pathInAnyCase(simulator.path, "SimConnect.xml");
    facts.isInWine = simulator.isInWine;
    std::string text;
    facts.exists = FileSystem::readFile(facts.path, text);
    facts.isWhole = hasDocumentEnd(text);
    for (const XmlBlock& block : xmlBlocks(text, "SimConnect.Comm")) {
        if (!block.isInComment) {
            facts.isWhole = facts.isWhole && block.isClosed;
            facts.entries.push_back({block.member("protocol"), block.member("port"), block.isDisabled()});
        }
    }
    return facts;
}

void judgeSimConnectDll(const std::string& notice, CheckResults& results) {
    constexpr std::string_view unusable = " can't be used: ";
    CheckTopic topic(results, "SimConnect.dll");
    if (notice.empty()) {
        topic.good("simconnect-dll-used", "the bridge uses it");
    } else if (const std::size_t at = notice.find(unusable); at == std::string::npos) {
        topic.good("simconnect-dll-none", "there is none; the bridge uses its built-in client");
    } else {
        const std::string reason = notice.substr(at + unusable.size(), notice.rfind(" (error ") - at - unusable.size());
        topic.warning("simconnect-dll-unusable", notice,
                      "Delete that file, or make it usable: " + MessageGuide::instance().explain(reason).meaning + '.');
    }
}

void judgeSimConnectCfg(const SimConnectCfgFacts& facts, CheckResults& results) {
    CheckTopic topic(results, "SimConnect.cfg");
    if (facts.result == simConnectInvalidArgument) {
        topic.fault("simconnect-cfg-no-section", facts.path + " has no section [SimConnect]",
                    "Add the line \"[SimConnect]\" above its settings, or delete the file.", facts.writing);
    } else if (facts.result != simConnectOk) {
        topic.fault("simconnect-cfg-unusable", facts.path + " has an unknown Protocol, or an invalid Port or Address",
                    "Write Protocol=IPv4, Address=127.0.0.1 and the simulator's Port, or delete the file.",
                    facts.writing);
    } else if (!facts.path.empty()) {
        topic.good("simconnect-cfg-used", facts.path + ": the bridge connects to " + endpointsText(facts.endpoints));
    } else if (havePipes()) {
        topic.good("simconnect-cfg-none", "there is none; the bridge connects to " + endpointsText(facts.endpoints));
    } else {
        topic.warning(
            "simconnect-cfg-none", "there is none; the bridge connects to " + endpointsText(facts.endpoints),
            "Write one beside the bridge or in your home folder, with the address and port of your simulator.",
            facts.writing);
    }
}

void judgeSimConnectXml(const SimConnectXmlFacts& facts, const SimConnectCfgFacts& client, CheckResults& results) {
    CheckTopic topic(results, facts.simulator + ", SimConnect.xml");
    if (!facts.exists) {
        // The simulator makes it with its defaults.
        return;
    }
    if (!facts.isWhole) {
        topic.fault("simconnect-xml-malformed", facts.path + " has an element that isn't closed",
                    "Rename the file; the simulator makes a new one when it starts.");
    } else if (std::ranges::all_of(facts.entries, &SimConnectEntry::isDisabled)) {
        topic.warning("simconnect-xml-disabled", facts.path + " has no enabled entry, so perhaps nothing can connect",
                      "Rename the file; the simulator makes a new one when it starts.");
    } else if (!client.endpoints.empty()) {
        judgeOffer(facts, client, topic);
    }
}
