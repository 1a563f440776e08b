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

std::string failureOf(const Arguments& arguments) {
    CockpitOptions options;
    std::string error;
    EXPECT_FALSE(parseCockpitOptions(arguments, options, error));
    return error;
}

} // namespace

TEST(CockpitCommandLine, ShowsThePageWithoutAnyOption) {
    const CockpitOptions options = parsed({});
    EXPECT_EQ(options.mode, CockpitMode::Page);
    EXPECT_FALSE(options.port);
    EXPECT_TRUE(options.openBrowser);
    EXPECT_EQ(options.configPath, "");
    EXPECT_FALSE(options.realBoards || options.realSimulator || options.fast);
}

TEST(CockpitCommandLine, TakesThePagesOptions) {
    const CockpitOptions options = parsed({"--port", "8123", "--config", "my.json", "--no-browser", "--real-boards"});
    EXPECT_EQ(options.mode, CockpitMode::Page);
    EXPECT_EQ(options.port, 8123);
    EXPECT_EQ(options.configPath, "my.json");
    EXPECT_FALSE(options.openBrowser);
    EXPECT_TRUE(options.realBoards);
    EXPECT_TRUE(parsed({"--real-simulator"}).realSimulator);
    EXPECT_EQ(parsed({"--port", "0"}).port, 0);
    EXPECT_EQ(parsed({"--port", "65535"}).port, 65535);
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

TEST(CockpitCommandLine, HelpsWhateverElseIsAskedFor) {
    EXPECT_EQ(parsed({"--help"}).mode, CockpitMode::Help);
    EXPECT_EQ(parsed({"--script", "--help"}).mode, CockpitMode::Help);
}

TEST(CockpitCommandLine, TellsWhatItDoesNotUnderstand) {
    EXPECT_EQ(failureOf({"--verbose"}), "unknown option --verbose");
    EXPECT_EQ(failureOf({"a.scenario"}), "unknown option a.scenario");
    EXPECT_EQ(failureOf({"--script"}), "no scenario given");
    EXPECT_EQ(failureOf({"--replay"}), "--replay needs a value");
    EXPECT_EQ(failureOf({"--config"}), "--config needs a value");
    EXPECT_EQ(failureOf({"--config", ""}), "--config needs a value");
    EXPECT_EQ(failureOf({"--port"}), "--port needs a value");
    for (const std::string port : {"65536", "-1", "80x", "http"}) {
        EXPECT_EQ(failureOf({"--port", port}),
                  '"' + port + "\" is no port: a number from 0 to 65535 was meant to stand here");
    }
}

TEST(CockpitCommandLine, TellsWhatDoesNotGoTogether) {
    EXPECT_EQ(failureOf({"--fast"}), "--fast goes with --script or --replay");
    EXPECT_EQ(failureOf({"--script", "a", "--replay", "b"}), "--script and --replay don't go together");
    EXPECT_EQ(failureOf({"--script", "a", "--config", "b"}),
              "--config doesn't go with --script: a scenario holds its own configuration");
    EXPECT_EQ(failureOf({"--script", "a", "--port", "1"}),
              "--port, --real-boards and --real-simulator don't go with --script");
    EXPECT_EQ(failureOf({"--replay", "a", "--real-boards"}),
              "--port, --real-boards and --real-simulator don't go with --replay");
    EXPECT_EQ(failureOf({"--real-boards", "--real-simulator"}),
              "--real-boards and --real-simulator together are VantrelBridgeHID itself");
}
