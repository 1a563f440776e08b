#include "simulation/cockpit/command_line.h"

#include <gtest/gtest.h>

namespace {

using Arguments = std::vector<std::string>;

CockpitOptions parsed(const Arguments& arguments) {
    CockpitOptions options;
    std::string error;
    EXPECT_TRUE(parseCockpitOptions(arguments, options, error)) << error;
    return options;
}

} // namespace

TEST(CockpitCommandLine, ShowsThePageUnlessAnotherModeIsAskedFor) {
    const CockpitOptions plain = parsed({});
    EXPECT_EQ(plain.mode, CockpitMode::Page);
    EXPECT_FALSE(plain.port);
    EXPECT_TRUE(plain.openBrowser);
    EXPECT_FALSE(plain.realBoards || plain.realSimulator || plain.fast);
    const CockpitOptions options = parsed({"--port", "8123", "--config", "my.json", "--no-browser", "--real-boards"});
    EXPECT_EQ(options.mode, CockpitMode::Page);
    EXPECT_EQ(options.port, 8123);
    EXPECT_EQ(options.configPath, "my.json");
    EXPECT_FALSE(options.openBrowser);
    EXPECT_TRUE(options.realBoards);
    EXPECT_TRUE(parsed({"--real-simulator"}).realSimulator);
    EXPECT_EQ(parsed({"--port", "0"}).port, 0);
    EXPECT_EQ(parsed({"--port", "65535"}).port, 65535);
    EXPECT_EQ(parsed({"--help"}).mode, CockpitMode::Help);
    EXPECT_EQ(parsed({"--script", "--help"}).mode, CockpitMode::Help);
}

TEST(CockpitCommandLine, TakesScriptsBeforeAndBehindOtherOptions) {
    const CockpitOptions options = parsed({"--script", "a", "b", "--fast", "c"});
    EXPECT_EQ(options.mode, CockpitMode::Script);
    EXPECT_EQ(options.scripts, (Arguments{"a", "b", "c"}));
    EXPECT_TRUE(options.fast);
    EXPECT_EQ(parsed({"--fast", "--script", "a"}).scripts, Arguments{"a"});
    EXPECT_EQ(parsed({"--script", "a", "--no-browser"}).mode, CockpitMode::Script);
}

TEST(CockpitCommandLine, TakesALogToReplayWithAConfiguration) {
    const CockpitOptions options = parsed({"--replay", "trace.log", "--config", "my.json", "--fast"});
    EXPECT_EQ(options.mode, CockpitMode::Replay);
    EXPECT_EQ(options.replayLog, "trace.log");
    EXPECT_EQ(options.configPath, "my.json");
    EXPECT_TRUE(options.fast);
}

TEST(CockpitCommandLine, RefusalSaysWhatIsWrong) {
    struct Case {
        Arguments arguments;
        const char* error;
    };
    const Case cases[] = {
        {{"--verbose"}, "unknown option --verbose"},
        {{"a.scenario"}, "unknown option a.scenario"},
        {{"--script"}, "no scenario given"},
        {{"--replay"}, "--replay needs a value"},
        {{"--config"}, "--config needs a value"},
        {{"--config", ""}, "--config needs a value"},
        {{"--port"}, "--port needs a value"},
        {{"--port", "65536"}, "\"65536\" is no port: a number from 0 to 65535 was meant to stand here"},
        {{"--port", "-1"}, "\"-1\" is no port: a number from 0 to 65535 was meant to stand here"},
        {{"--port", "80x"}, "\"80x\" is no port: a number from 0 to 65535 was meant to stand here"},
        {{"--fast"}, "--fast goes with --script or --replay"},
        {{"--script", "a", "--replay", "b"}, "--script and --replay don't go together"},
        {{"--script", "a", "--config", "b"},
         "--config doesn't go with --script: a scenario holds its own configuration"},
        {{"--script", "a", "--port", "1"}, "--port, --real-boards and --real-simulator don't go with --script"},
        {{"--replay", "a", "--real-boards"}, "--port, --real-boards and --real-simulator don't go with --replay"},
        {{"--real-boards", "--real-simulator"},
         "--real-boards and --real-simulator together are VantrelBridgeHID itself"},
    };
    for (const Case& one : cases) {
        CockpitOptions options;
        std::string error;
        EXPECT_FALSE(parseCockpitOptions(one.arguments, options, error)) << one.error;
        EXPECT_EQ(error, one.error);
    }
}
