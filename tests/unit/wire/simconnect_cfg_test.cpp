#include "wire/simconnect_cfg.h"

#include "tests/support/temp_folder.h"
#include "wire/pipe.h"
#include "wire/simconnect_open.h"

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

TEST(SimConnectCfg, SectionWithoutNumberIsIndexZero) {
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=Ipv4\nAddress=192.168.1.20\nPort=5000\nMaxReceiveSize=4096\n"),
              "IPv4 192.168.1.20 5000");
}

TEST(SimConnectCfg, NumberedSectionsAreTheOtherIndexes) {
    const char* text = "[SimConnect]\nProtocol=Ipv4\nPort=1\n[SimConnect.1]\nProtocol=Ipv4\nPort=2\n"
                       "[SimConnect.12]\nProtocol=Ipv4\nPort=3\n";
    EXPECT_EQ(parsed(text, 1), "IPv4 127.0.0.1 2");
    EXPECT_EQ(parsed(text, 12), "IPv4 127.0.0.1 3");
    EXPECT_EQ(parsed(text, 0), "IPv4 127.0.0.1 1");
}

TEST(SimConnectCfg, SectionsKeysAndProtocolsMayBeInAnyCase) {
    EXPECT_EQ(parsed("[SIMCONNECT.2]\npROTOCOL=IPV6\nADDRESS=fe80::1\nport=777\n", 2), "IPv6 fe80::1 777");
    EXPECT_EQ(parsed("[simconnect]\nPROTOCOL=PIPE\n"), defaultPipe);
}

TEST(SimConnectCfg, FailureLeavesTheEndpoints) {
    SimConnectEndpoints endpoints{{"kept", 9, AddressFamily::Ipv6}};
    EXPECT_EQ(parseSimConnectCfg("[SimConnect.1]\nPort=2\n", 0, endpoints), simConnectInvalidArgument);
    EXPECT_EQ(parseSimConnectCfg("[SimConnect]\nPort=2\n", 1, endpoints), simConnectInvalidArgument);
    EXPECT_EQ(parseSimConnectCfg("", 0, endpoints), simConnectInvalidArgument);
    EXPECT_EQ(parseSimConnectCfg("[SimConnect]\nProtocol=Ipx\n", 0, endpoints), simConnectFail);
    EXPECT_EQ(textOf(endpoints), "IPv6 kept 9");
}

TEST(SimConnectCfg, OtherSectionsAreNobodysIndex) {
    EXPECT_EQ(parsed("[SimConnectX]\n[SimConnect.x]\n[SimConnect.]\n[Other]\n"), "no such index");
}

TEST(SimConnectCfg, MissingKeysHaveTheLocalSimulatorsValues) {
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=Ipv4\n"), "IPv4 127.0.0.1 500");
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=Ipv6\n"), "IPv6 ::1 501");
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=Pipe\n"), defaultPipe);
}

TEST(SimConnectCfg, AutoIsThePipeThenIpv6ThenIpv4) {
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=Auto\n"), std::string(defaultPipe) + ", IPv6 ::1 501, IPv4 127.0.0.1 500");
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=auto\nAddress=localhost\nPort=600\n"),
              R"(\\.\pipe\600, IPv6 localhost 600, IPv4 localhost 600)");
}

TEST(SimConnectCfg, AutoLeavesThePipesOfOtherMachinesAlone) {
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=Auto\nAddress=sim.local\nPort=600\n"),
              "IPv6 sim.local 600, IPv4 sim.local 600");
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=Auto\nAddress=sim.local\nPort=Custom/SimConnect\n"), "unreachable");
}

TEST(SimConnectCfg, NoProtocolIsAuto) {
    EXPECT_EQ(parsed("[SimConnect]\n"), parsed("[SimConnect]\nProtocol=Auto\n"));
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=\nPort=9\n"), parsed("[SimConnect]\nProtocol=Auto\nPort=9\n"));
}

TEST(SimConnectCfg, AutoWithAPipesNameIsThePipeAlone) {
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=Auto\nPort=Custom/SimConnect\n"), R"(\\.\pipe\Custom/SimConnect)");
}

TEST(SimConnectCfg, DotIsTheLocalMachine) {
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=Ipv4\nAddress=.\nPort=5001\n"), "IPv4 127.0.0.1 5001");
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=Ipv6\nAddress=.\nPort=5001\n"), "IPv6 ::1 5001");
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=Pipe\nAddress=.\n"), defaultPipe);
}

TEST(SimConnectCfg, PortOfAPipeIsItsName) {
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=Pipe\nPort=Custom/SimConnect\n"), R"(\\.\pipe\Custom/SimConnect)");
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=Pipe\nPort=Microsoft Flight Simulator\\SimConnect\n"), defaultPipe);
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=Pipe\nPort=0\n"), R"(\\.\pipe\0)");
}

TEST(SimConnectCfg, PipeOfAnotherMachineBearsItsName) {
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=Pipe\nAddress=SIM-PC\n"),
              R"(\\SIM-PC\pipe\Microsoft Flight Simulator\SimConnect)");
}

TEST(SimConnectCfg, PipeOfTheLoopbackAddressIsALocalOne) {
    for (const char* address : {"127.0.0.1", "localhost", "LocalHost", "::1"}) {
        EXPECT_EQ(parsed(std::string("[SimConnect]\nProtocol=Pipe\nAddress=") + address + "\n"), defaultPipe);
    }
}

TEST(SimConnectCfg, PathInPlaceOfAPipesHostIsNotFollowed) {
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=Pipe\nAddress=server\\share\n"), "unreachable");
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=Pipe\nAddress=server/share\n"), "unreachable");
}

TEST(SimConnectCfg, UnknownProtocolCannotBeReached) {
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=Ipx\n"), "unreachable");
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=Pipe4\n"), "unreachable");
}

TEST(SimConnectCfg, PortThatIsNoneCannotBeReached) {
    for (const char* protocol : {"Ipv4", "Ipv6"}) {
        const std::string section = std::string("[SimConnect]\nProtocol=") + protocol + "\nPort=";
        for (const char* port : {"0", "65536", "-1", "50o", "Custom/SimConnect", "5 0"}) {
            EXPECT_EQ(parsed(section + port + "\n"), "unreachable") << port;
        }
    }
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=Ipv4\nPort=65535\n"), "IPv4 127.0.0.1 65535");
}

TEST(SimConnectCfg, BlanksCommentsLineEndsAndByteOrderMarkAreLetPass) {
    EXPECT_EQ(
        parsed("\xEF\xBB\xBF  ; head\r\n\r\n  [ SimConnect ] \r\n ;Port=1\r\n\tAddress =  10.0.0.1 \r\nnonsense\r\n"
               " Port = 600\t\r\n=7\r\nProtocol = Ipv4 \r\n"),
        "IPv4 10.0.0.1 600");
}

TEST(SimConnectCfg, LastLineNeedsNoEnd) {
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=Ipv4\nPort=601"), "IPv4 127.0.0.1 601");
}

TEST(SimConnectCfg, OfTwoSectionsOrKeysTheFirstCounts) {
    EXPECT_EQ(parsed("[SimConnect]\nProtocol=Ipv4\nPort=1\nPort=2\n[Other]\nPort=3\n[SimConnect]\nPort=4\nAddress=x\n"),
              "IPv4 127.0.0.1 1");
}

TEST(SimConnectCfg, UnclosedSectionNameIsTakenToTheLinesEnd) {
    EXPECT_EQ(parsed("[SimConnect\nProtocol=Ipv4\nPort=8\n["), "IPv4 127.0.0.1 8");
}

TEST(SimConnectEndpointSearch, FirstFolderWithAFileCounts) {
    const TempFolder first;
    const TempFolder second;
    second.write("SimConnect.cfg", "[SimConnect]\nProtocol=Ipv4\nPort=701\n");
    EXPECT_EQ(found({first.path(), second.path()}), "IPv4 127.0.0.1 701");
    first.write("SimConnect.cfg", "[SimConnect]\nProtocol=Ipv4\nPort=700\n");
    EXPECT_EQ(found({first.path(), second.path()}), "IPv4 127.0.0.1 700");
}

TEST(SimConnectEndpointSearch, IndexMissingInTheFirstFileIsNotSoughtInTheNext) {
    const TempFolder first;
    const TempFolder second;
    first.write("SimConnect.cfg", "[SimConnect.1]\n");
    second.write("SimConnect.cfg", "[SimConnect]\n");
    SimConnectEndpoints endpoints;
    EXPECT_EQ(findSimConnectEndpoints({first.path(), second.path()}, 0, endpoints), simConnectInvalidArgument);
}

TEST(SimConnectEndpointSearch, NoFileGivesTheLocalSimulator) {
    const TempFolder folder;
    EXPECT_EQ(found({"", folder.path()}, 3), localSimulator());
}

TEST(SimConnectEndpointSearch, LocalIndexIgnoresTheFile) {
    const TempFolder folder;
    folder.write("SimConnect.cfg", "[SimConnect]\nProtocol=Ipv4\nPort=702\n");
    EXPECT_EQ(found({folder.path()}, simConnectLocalIndex), localSimulator());
}

TEST(SimConnectOpenOnAPipe, FailsWhereNobodyHasMadeIt) {
    SimConnectHandle handle = nullptr;
    const SimConnectEndpoint endpoint{".", 0, AddressFamily::Any, "bridge-test-nobody"};
    EXPECT_EQ(simConnectOpenAt(&handle, "test", endpoint), simConnectFail);
    EXPECT_EQ(handle, nullptr);
}

TEST(SimConnectOpenOnAPipe, FailsWithANameThatIsTooLong) {
    SimConnectHandle handle = nullptr;
    const SimConnectEndpoint endpoint{".", 0, AddressFamily::Any, std::string(70000, 'x')};
    EXPECT_EQ(simConnectOpenAt(&handle, "test", endpoint), simConnectFail);
    EXPECT_EQ(handle, nullptr);
}

} // namespace
