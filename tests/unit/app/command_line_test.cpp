#include "app/command_line.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

CommandLine parse(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "VantrelBridgeHID");
    return parseCommandLine(static_cast<int>(arguments.size()), arguments.data());
}

TEST(CommandLineParsing, NothingGivenLeavesEverythingOff) {
    const CommandLine options = parse({});
    EXPECT_FALSE(options.console);
    EXPECT_FALSE(options.hidTrace);
    EXPECT_FALSE(options.listExeXml);
    EXPECT_FALSE(options.registerProgram);
    EXPECT_FALSE(options.unregisterProgram);
    EXPECT_EQ(options.configPath, "");
}

TEST(CommandLineParsing, ReadsEachOption) {
    const CommandLine options = parse({"--console", "--hid-trace", "--config", "a b.json"});
    EXPECT_TRUE(options.console);
    EXPECT_TRUE(options.hidTrace);
    EXPECT_FALSE(options.listExeXml || options.registerProgram || options.unregisterProgram);
    EXPECT_EQ(options.configPath, "a b.json");
}

TEST(CommandLineParsing, ReadsTheOptionsOfRegistrationEachForItself) {
    EXPECT_TRUE(parse({"--list-exe-xml"}).listExeXml);
    EXPECT_FALSE(parse({"--list-exe-xml"}).registerProgram);
    EXPECT_TRUE(parse({"--register"}).registerProgram);
    EXPECT_FALSE(parse({"--register"}).unregisterProgram);
    EXPECT_TRUE(parse({"--unregister"}).unregisterProgram);
    EXPECT_FALSE(parse({"--unregister"}).registerProgram);
}

TEST(CommandLineParsing, ConfigAsLastArgumentIsIgnored) {
    const CommandLine options = parse({"--console", "--config"});
    EXPECT_TRUE(options.console);
    EXPECT_EQ(options.configPath, "");
}

TEST(CommandLineParsing, EmptyConfigValueCountsAsNone) {
    EXPECT_EQ(parse({"--config", ""}).configPath, "");
}

TEST(CommandLineParsing, LaterConfigReplacesTheEarlierOne) {
    EXPECT_EQ(parse({"--config", "a", "--config", "b"}).configPath, "b");
    EXPECT_EQ(parse({"--config", "a", "--config", ""}).configPath, "");
    EXPECT_EQ(parse({"--config", "a", "--config"}).configPath, "a");
}

TEST(CommandLineParsing, ConfigTakesTheNextArgumentWhateverItIs) {
    const CommandLine options = parse({"--config", "--console"});
    EXPECT_EQ(options.configPath, "--console");
    EXPECT_FALSE(options.console);
}

TEST(CommandLineParsing, CaseCountsAndUnknownArgumentsAreIgnored) {
    const CommandLine options = parse({"--CONSOLE", "-console", "console", "--hid-trace=1", "--help", "--config=x",
                                       "--Register", "--register=1", "-unregister", "--list-exe-xml ", "--list"});
    EXPECT_FALSE(options.listExeXml || options.registerProgram || options.unregisterProgram);
    EXPECT_FALSE(options.console);
    EXPECT_FALSE(options.hidTrace);
    EXPECT_EQ(options.configPath, "");
}

TEST(CommandLineParsing, TheProgramNameIsNoArgument) {
    const char* const arguments[] = {"--console"};
    EXPECT_FALSE(parseCommandLine(1, arguments).console);
    EXPECT_FALSE(parseCommandLine(0, arguments).console);
}

} // namespace
