#include "app/command_line.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

/// The options that the arguments set, in the order of the members.
std::string parsed(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "VantrelBridgeHID");
    const CommandLine options = parseCommandLine(static_cast<int>(arguments.size()), arguments.data());
    return std::string(options.console ? "console " : "") + (options.hidTrace ? "trace " : "") +
           (options.listExeXml ? "list " : "") + (options.registerProgram ? "register " : "") +
           (options.unregisterProgram ? "unregister " : "") + "[" + options.configPath + "]";
}

TEST(CommandLineParsing, ReadsEachOption) {
    EXPECT_EQ(parsed({}), "[]");
    EXPECT_EQ(parsed({"--console"}), "console []");
    EXPECT_EQ(parsed({"--hid-trace"}), "trace []");
    EXPECT_EQ(parsed({"--list-exe-xml"}), "list []");
    EXPECT_EQ(parsed({"--register"}), "register []");
    EXPECT_EQ(parsed({"--unregister"}), "unregister []");
    EXPECT_EQ(parsed({"--console", "--hid-trace", "--config", "a b.json"}), "console trace [a b.json]");
}

TEST(CommandLineParsing, ConfigTakesTheNextArgumentWhateverItIs) {
    EXPECT_EQ(parsed({"--config", "--console"}), "[--console]");
    EXPECT_EQ(parsed({"--config", ""}), "[]");
    EXPECT_EQ(parsed({"--config", "a", "--config", "b"}), "[b]");
    EXPECT_EQ(parsed({"--config", "a", "--config", ""}), "[]");
}

TEST(CommandLineParsing, ConfigAsLastArgumentIsIgnored) {
    EXPECT_EQ(parsed({"--console", "--config"}), "console []");
    EXPECT_EQ(parsed({"--config", "a", "--config"}), "[a]");
}

TEST(CommandLineParsing, CaseCountsAndUnknownArgumentsAreIgnored) {
    EXPECT_EQ(parsed({"--CONSOLE", "-console", "console", "--hid-trace=1", "--help", "--config=x", "--Register",
                      "--register=1", "-unregister", "--list-exe-xml ", "--list", "--List-Exe-Xml"}),
              "[]");
}

TEST(CommandLineParsing, TheProgramNameIsNoArgument) {
    const char* const arguments[] = {"--console"};
    EXPECT_FALSE(parseCommandLine(1, arguments).console);
    EXPECT_FALSE(parseCommandLine(0, arguments).console);
}

} // namespace
