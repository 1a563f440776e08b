#include "simconnect/simconnect_cfg.h"

#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

namespace {

TEST(SimConnectCfg, SectionWithoutNumberIsIndexZero) {
    SimConnectEndpoint endpoint;
    const char* text = "[SimConnect]\nProtocol=Ipv4\nAddress=192.168.1.20\nPort=5000\nMaxReceiveSize=4096\n";
    ASSERT_EQ(parseSimConnectCfg(text, 0, endpoint), simConnectOk);
    EXPECT_EQ(endpoint.address, "192.168.1.20");
    EXPECT_EQ(endpoint.port, 5000);
    EXPECT_EQ(endpoint.family, AddressFamily::Ipv4);
}

TEST(SimConnectCfg, NumberedSectionsAreTheOtherIndexes) {
    const char* text = "[SimConnect]\nPort=1\n[SimConnect.1]\nPort=2\n[SimConnect.12]\nPort=3\n";
    SimConnectEndpoint endpoint;
    ASSERT_EQ(parseSimConnectCfg(text, 1, endpoint), simConnectOk);
    EXPECT_EQ(endpoint.port, 2);
    ASSERT_EQ(parseSimConnectCfg(text, 12, endpoint), simConnectOk);
    EXPECT_EQ(endpoint.port, 3);
    ASSERT_EQ(parseSimConnectCfg(text, 0, endpoint), simConnectOk);
    EXPECT_EQ(endpoint.port, 1);
}

TEST(SimConnectCfg, SectionsKeysAndProtocolsMayBeInAnyCase) {
    SimConnectEndpoint endpoint;
    ASSERT_EQ(parseSimConnectCfg("[SIMCONNECT.2]\npROTOCOL=IPV6\nADDRESS=fe80::1\nport=777\n", 2, endpoint),
              simConnectOk);
    EXPECT_EQ(endpoint.family, AddressFamily::Ipv6);
    EXPECT_EQ(endpoint.address, "fe80::1");
    EXPECT_EQ(endpoint.port, 777);
}

TEST(SimConnectCfg, MissingIndexIsAnInvalidArgumentAndLeavesTheEndpoint) {
    SimConnectEndpoint endpoint{"kept", 9, AddressFamily::Ipv6};
    EXPECT_EQ(parseSimConnectCfg("[SimConnect.1]\nPort=2\n", 0, endpoint), simConnectInvalidArgument);
    EXPECT_EQ(parseSimConnectCfg("[SimConnect]\nPort=2\n", 1, endpoint), simConnectInvalidArgument);
    EXPECT_EQ(parseSimConnectCfg("", 0, endpoint), simConnectInvalidArgument);
    EXPECT_EQ(endpoint.address, "kept");
    EXPECT_EQ(endpoint.port, 9);
}

TEST(SimConnectCfg, OtherSectionsAreNobodysIndex) {
    SimConnectEndpoint endpoint;
    EXPECT_EQ(parseSimConnectCfg("[SimConnectX]\n[SimConnect.x]\n[SimConnect.]\n[Other]\n", 0, endpoint),
              simConnectInvalidArgument);
}

TEST(SimConnectCfg, MissingKeysHaveTheLocalSimulatorsValues) {
    SimConnectEndpoint endpoint;
    ASSERT_EQ(parseSimConnectCfg("[SimConnect]\n", 0, endpoint), simConnectOk);
    EXPECT_EQ(endpoint.address, "127.0.0.1");
    EXPECT_EQ(endpoint.port, 500);
    EXPECT_EQ(endpoint.family, AddressFamily::Any);
    ASSERT_EQ(parseSimConnectCfg("[SimConnect]\nProtocol=Ipv6\n", 0, endpoint), simConnectOk);
    EXPECT_EQ(endpoint.address, "::1");
    EXPECT_EQ(endpoint.port, 501);
}

TEST(SimConnectCfg, AutoTakesAnyFamily) {
    SimConnectEndpoint endpoint{"", 1, AddressFamily::Ipv4};
    ASSERT_EQ(parseSimConnectCfg("[SimConnect]\nProtocol=Auto\nAddress=sim.local\n", 0, endpoint), simConnectOk);
    EXPECT_EQ(endpoint.family, AddressFamily::Any);
    EXPECT_EQ(endpoint.address, "sim.local");
}

TEST(SimConnectCfg, DotIsTheLocalMachine) {
    SimConnectEndpoint endpoint;
    ASSERT_EQ(parseSimConnectCfg("[SimConnect]\nAddress=.\nPort=5001\n", 0, endpoint), simConnectOk);
    EXPECT_EQ(endpoint.address, "127.0.0.1");
    EXPECT_EQ(endpoint.port, 5001);
}

TEST(SimConnectCfg, PipeCannotBeReached) {
    SimConnectEndpoint endpoint{"kept", 9, AddressFamily::Any};
    EXPECT_EQ(parseSimConnectCfg("[SimConnect]\nProtocol=Pipe\nPort=Custom/SimConnect\n", 0, endpoint), simConnectFail);
    EXPECT_EQ(endpoint.address, "kept");
}

TEST(SimConnectCfg, UnknownProtocolCannotBeReached) {
    SimConnectEndpoint endpoint;
    EXPECT_EQ(parseSimConnectCfg("[SimConnect]\nProtocol=Ipx\n", 0, endpoint), simConnectFail);
}

TEST(SimConnectCfg, PortThatIsNoneCannotBeReached) {
    SimConnectEndpoint endpoint;
    for (const char* port : {"0", "65536", "-1", "50o", "Custom/SimConnect", "5 0"}) {
        const std::string text = std::string("[SimConnect]\nPort=") + port + "\n";
        EXPECT_EQ(parseSimConnectCfg(text, 0, endpoint), simConnectFail) << port;
    }
    EXPECT_EQ(parseSimConnectCfg("[SimConnect]\nPort=65535\n", 0, endpoint), simConnectOk);
}

TEST(SimConnectCfg, BlanksCommentsLineEndsAndByteOrderMarkAreLetPass) {
    const char* text =
        "\xEF\xBB\xBF  ; head\r\n\r\n  [ SimConnect ] \r\n ;Port=1\r\n\tAddress =  10.0.0.1 \r\nnonsense\r\n"
        " Port = 600\t\r\n=7\r\n";
    SimConnectEndpoint endpoint;
    ASSERT_EQ(parseSimConnectCfg(text, 0, endpoint), simConnectOk);
    EXPECT_EQ(endpoint.address, "10.0.0.1");
    EXPECT_EQ(endpoint.port, 600);
}

TEST(SimConnectCfg, LastLineNeedsNoEnd) {
    SimConnectEndpoint endpoint;
    ASSERT_EQ(parseSimConnectCfg("[SimConnect]\nPort=601", 0, endpoint), simConnectOk);
    EXPECT_EQ(endpoint.port, 601);
}

TEST(SimConnectCfg, OfTwoSectionsOrKeysTheFirstCounts) {
    SimConnectEndpoint endpoint;
    const char* text = "[SimConnect]\nPort=1\nPort=2\n[Other]\nPort=3\n[SimConnect]\nPort=4\nAddress=late\n";
    ASSERT_EQ(parseSimConnectCfg(text, 0, endpoint), simConnectOk);
    EXPECT_EQ(endpoint.port, 1);
    EXPECT_EQ(endpoint.address, "127.0.0.1");
}

TEST(SimConnectCfg, UnclosedSectionNameIsTakenToTheLinesEnd) {
    SimConnectEndpoint endpoint;
    ASSERT_EQ(parseSimConnectCfg("[SimConnect\nPort=8\n[", 0, endpoint), simConnectOk);
    EXPECT_EQ(endpoint.port, 8);
}

TEST(SimConnectEndpointSearch, FirstFolderWithAFileCounts) {
    const TempFolder first;
    const TempFolder second;
    second.write("SimConnect.cfg", "[SimConnect]\nPort=701\n");
    SimConnectEndpoint endpoint;
    ASSERT_EQ(findSimConnectEndpoint({first.path(), second.path()}, 0, endpoint), simConnectOk);
    EXPECT_EQ(endpoint.port, 701);
    first.write("SimConnect.cfg", "[SimConnect]\nPort=700\n");
    ASSERT_EQ(findSimConnectEndpoint({first.path(), second.path()}, 0, endpoint), simConnectOk);
    EXPECT_EQ(endpoint.port, 700);
}

TEST(SimConnectEndpointSearch, IndexMissingInTheFirstFileIsNotSoughtInTheNext) {
    const TempFolder first;
    const TempFolder second;
    first.write("SimConnect.cfg", "[SimConnect.1]\n");
    second.write("SimConnect.cfg", "[SimConnect]\n");
    SimConnectEndpoint endpoint;
    EXPECT_EQ(findSimConnectEndpoint({first.path(), second.path()}, 0, endpoint), simConnectInvalidArgument);
}

TEST(SimConnectEndpointSearch, NoFileGivesTheLocalSimulator) {
    const TempFolder folder;
    SimConnectEndpoint endpoint{"other", 1, AddressFamily::Ipv6};
    ASSERT_EQ(findSimConnectEndpoint({"", folder.path()}, 3, endpoint), simConnectOk);
    EXPECT_EQ(endpoint.address, "127.0.0.1");
    EXPECT_EQ(endpoint.port, 500);
}

TEST(SimConnectEndpointSearch, LocalIndexIgnoresTheFile) {
    const TempFolder folder;
    folder.write("SimConnect.cfg", "[SimConnect]\nPort=702\n");
    SimConnectEndpoint endpoint;
    ASSERT_EQ(findSimConnectEndpoint({folder.path()}, simConnectLocalIndex, endpoint), simConnectOk);
    EXPECT_EQ(endpoint.port, 500);
}

} // namespace
