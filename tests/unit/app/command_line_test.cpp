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
    EXPECT_EQ(options.configPath, "");
}

TEST(CommandLineParsing, ReadsEachOption) {
    const CommandLine options = parse({"--console", "--hid-trace", "--config", "a b.json"});
    EXPECT_TRUE(options.console);
    EXPECT_TRUE(options.hidTrace);
    EXPECT_EQ(options.configPath, "a b.json");
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
    const CommandLine options = parse({"--CONSOLE", "-console", "console", "--hid-trace=1", "--help", "--config=x"});
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
