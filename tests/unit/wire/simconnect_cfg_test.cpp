#include "wire/simconnect_cfg.h"

#include "tests/support/temp_folder.h"
#include "wire/pipe.h"

#include <gtest/gtest.h>

namespace {

constexpr const char* defaultPipe = R"(\\.\pipe\Microsoft Flight Simulator\SimConnect)";

std::string textOf(const SimConnectEndpoint& endpoint) {
    if (!endpoint.pipe.empty()) {
        return R"(\\)" + endpoint.address + R"(\pipe\)" + endpoint.pipe;
    }
    const std::string family = endpoint.family == AddressFamily::Ipv4   ? "IPv4 "
                               : endpoint.family == AddressFamily::Ipv6 ? "IPv6 "
                                                                        : "TCP ";
    return family + endpoint.address + " " + std::to_string(endpoint.port);
}

std::string textOf(const SimConnectEndpoints& endpoints) {
    std::string text;
    for (const SimConnectEndpoint& endpoint : endpoints) {
        text += text.empty() ? "" : ", ";
        text += textOf(endpoint);
    }
    return text;
}

// The endpoints of a file's index as one text; which failure it is when there are none.
std::string parsed(std::string_view text, std::uint32_t configIndex = 0) {
    SimConnectEndpoints endpoints;
    const SimConnectResult result = parseSimConnectCfg(text, configIndex, endpoints);
    return result == simConnectOk ? textOf(endpoints) : result == simConnectFail ? "unreachable" : "no such index";
}

std::string found(const std::vector<std::string>& folders, std::uint32_t configIndex = 0) {
    SimConnectEndpoints endpoints{{"other", 1, AddressFamily::Ipv6}};
    const SimConnectResult result = findSimConnectEndpoints(folders, configIndex, endpoints);
    return result == simConnectOk ? textOf(endpoints) : "failed";
}

std::string localSimulator() {
    return havePipes() ? defaultPipe : "TCP 127.0.0.1 500";
}

struct CfgCase {
    std::string rule;
    std::string text;
    std::string expected;
    std::uint32_t index = 0;
};

void expectAll(const std::vector<CfgCase>& cases) {
    for (const CfgCase& row : cases) {
        EXPECT_EQ(parsed(row.text, row.index), row.expected) << row.rule;
    }
}

TEST(SimConnectCfg, IndexChoosesItsSection) {
    const std::string numbered = "[SimConnect]\nProtocol=Ipv4\nPort=1\n[SimConnect.1]\nProtocol=Ipv4\nPort=2\n"
                                 "[SimConnect.12]\nProtocol=Ipv4\nPort=3\n";
    expectAll({
        {"no number is index 0", numbered, "IPv4 127.0.0.1 1", 0},
        {"a number is its index", numbered, "IPv4 127.0.0.1 2", 1},
        {"of two digits, too", numbered, "IPv4 127.0.0.1 3", 12},
        {"missing", numbered, "no such index", 2},
        {"missing index 0", "[SimConnect.1]\nPort=2\n", "no such index"},
        {"empty file", "", "no such index"},
        {"others", "[SimConnectX]\n[SimConnect.x]\n[SimConnect.]\n[Other]\n", "no such index"},
        {"in any case", "[SIMCONNECT.2]\npROTOCOL=IPV6\nADDRESS=fe80::1\nport=777\n", "IPv6 fe80::1 777", 2},
        {"the first of two counts",
         "[SimConnect]\nProtocol=Ipv4\nPort=1\nPort=2\n[Other]\nPort=3\n[SimConnect]\nPort=4\nAddress=x\n",
         "IPv4 127.0.0.1 1"},
        {"an unclosed name ends with its line", "[SimConnect\nProtocol=Ipv4\nPort=8\n[", "IPv4 127.0.0.1 8"},
    });
}

TEST(SimConnectCfg, BlanksCommentsAndOtherKeysMeanNothing) {
    expectAll({
        {"blanks, comments, line ends and the byte order mark are skipped",
         "\xEF\xBB\xBF  ; head\r\n\r\n  [ SimConnect ] \r\n ;Port=1\r\n\tAddress =  10.0.0.1 \r\nnonsense\r\n"
         " Port = 600\t\r\n=7\r\nProtocol = Ipv4 \r\n",
         "IPv4 10.0.0.1 600"},
        {"the last line needs no end", "[SimConnect]\nProtocol=Ipv4\nPort=601", "IPv4 127.0.0.1 601"},
        {"other keys are ignored",
         "[SimConnect]\nProtocol=Ipv4\nAddress=192.168.1.20\nPort=5000\nMaxReceiveSize=4096\n",
         "IPv4 192.168.1.20 5000"},
    });
}

TEST(SimConnectCfg, ProtocolAddressAndPortMakeTheEndpoints) {
    const std::string all = std::string(defaultPipe) + ", IPv6 ::1 501, IPv4 127.0.0.1 500";
    std::vector<CfgCase> cases{
        {"IPv4 with nothing else is the local simulator", "Protocol=Ipv4", "IPv4 127.0.0.1 500"},
        {"IPv6 too, on the next port", "Protocol=Ipv6", "IPv6 ::1 501"},
        {"so is the pipe", "PROTOCOL=PIPE", defaultPipe},
        {"Auto is the pipe, then IPv6, then IPv4", "Protocol=Auto", all},
        {"no protocol is Auto", "", all},
        {"an empty one, too", "Protocol=", all},
        {"Auto at an address of this machine", "Protocol=auto\nAddress=localhost\nPort=600",
         R"(\\.\pipe\600, IPv6 localhost 600, IPv4 localhost 600)"},
        {"Auto leaves the pipes of other machines alone", "Protocol=Auto\nAddress=sim.local\nPort=600",
         "IPv6 sim.local 600, IPv4 sim.local 600"},
        {"so that one of them can't be reached by a pipe's name",
         "Protocol=Auto\nAddress=sim.local\nPort=Custom/SimConnect", "unreachable"},
        {"Auto with a pipe's name is the pipe alone", "Protocol=Auto\nPort=Custom/SimConnect",
         R"(\\.\pipe\Custom/SimConnect)"},
        {"a dot is this machine", "Protocol=Ipv4\nAddress=.\nPort=5001", "IPv4 127.0.0.1 5001"},
        {"by IPv6, too", "Protocol=Ipv6\nAddress=.\nPort=5001", "IPv6 ::1 5001"},
        {"and of a pipe", "Protocol=Pipe\nAddress=.", defaultPipe},
        {"a pipe's port is its name", "Protocol=Pipe\nPort=Custom/SimConnect", R"(\\.\pipe\Custom/SimConnect)"},
        {"with a separator, too", "Protocol=Pipe\nPort=Microsoft Flight Simulator\\SimConnect", defaultPipe},
        {"even a number", "Protocol=Pipe\nPort=0", R"(\\.\pipe\0)"},
        {"a pipe of another machine has its name", "Protocol=Pipe\nAddress=SIM-PC",
         R"(\\SIM-PC\pipe\Microsoft Flight Simulator\SimConnect)"},
        {"a path in place of a pipe's host is not followed", "Protocol=Pipe\nAddress=server\\share", "unreachable"},
        {"with slashes, too", "Protocol=Pipe\nAddress=server/share", "unreachable"},
        {"unknown protocol", "Protocol=Ipx", "unreachable"},
        {"one that begins like a known one", "Protocol=Pipe4", "unreachable"},
        {"the last port", "Protocol=Ipv4\nPort=65535", "IPv4 127.0.0.1 65535"},
    };
    for (const char* port : {"0", "65536", "-1", "50o", "Custom/SimConnect", "5 0"}) {
        cases.push_back({"no port of IPv4", std::string("Protocol=Ipv4\nPort=") + port, "unreachable"});
        cases.push_back({"no port of IPv6", std::string("Protocol=Ipv6\nPort=") + port, "unreachable"});
    }
    for (const char* address : {"127.0.0.1", "localhost", "LocalHost", "::1"}) {
        cases.push_back(
            {"a pipe at the loopback address", std::string("Protocol=Pipe\nAddress=") + address, defaultPipe});
    }
    for (CfgCase& row : cases) {
        row.text = "[SimConnect]\n" + row.text + "\n";
    }
    expectAll(cases);
}

TEST(SimConnectCfg, FailureLeavesTheEndpoints) {
    SimConnectEndpoints endpoints{{"kept", 9, AddressFamily::Ipv6}};
    EXPECT_EQ(parseSimConnectCfg("", 0, endpoints), simConnectInvalidArgument);
    EXPECT_EQ(parseSimConnectCfg("[SimConnect]\nProtocol=Ipx\n", 0, endpoints), simConnectFail);
    EXPECT_EQ(textOf(endpoints), "IPv6 kept 9");
}

TEST(SimConnectEndpointSearch, FirstFolderWithAFileCounts) {
    const TempFolder first;
    const TempFolder second;
    second.write("SimConnect.cfg", "[SimConnect]\nProtocol=Ipv4\nPort=701\n");
    EXPECT_EQ(found({first.path(), second.path()}), "IPv4 127.0.0.1 701");
    first.write("SimConnect.cfg", "[SimConnect]\nProtocol=Ipv4\nPort=700\n");
    EXPECT_EQ(found({first.path(), second.path()}), "IPv4 127.0.0.1 700");
}

TEST(SimConnectEndpointSearch, IndexMissingInTheFirstFileIsNotLookedForInTheNext) {
    const TempFolder first;
    const TempFolder second;
    first.write("SimConnect.cfg", "[SimConnect.1]\n");
    second.write("SimConnect.cfg", "[SimConnect]\n");
    SimConnectEndpoints endpoints;
    EXPECT_EQ(findSimConnectEndpoints({first.path(), second.path()}, 0, endpoints), simConnectInvalidArgument);
}

TEST(SimConnectEndpointSearch, NoFileOrTheLocalIndexGivesTheLocalSimulator) {
    const TempFolder folder;
    EXPECT_EQ(found({"", folder.path()}, 3), localSimulator());
    folder.write("SimConnect.cfg", "[SimConnect]\nProtocol=Ipv4\nPort=702\n");
    EXPECT_EQ(found({folder.path()}, simConnectLocalIndex), localSimulator());
}

} // namespace
