#include "simulation/simulator/simulator_options.h"

#include <gtest/gtest.h>

TEST(SimulatorOptions, AreReadInAnyOrder) {
    std::string error;
    const auto options =
        readSimulatorOptions({"--keep", "--answers", "measured", "--port", "0", "--module-missing"}, error);
    ASSERT_TRUE(options) << error;
    EXPECT_EQ(options->port, 0);
    EXPECT_EQ(options->answers, ModuleAnswers::Measured);
    EXPECT_TRUE(options->keep && options->moduleMissing && !options->help && !options->pipe);
    EXPECT_EQ(readSimulatorOptions({"--pipe", "here"}, error)->pipe, "here");
    EXPECT_NE(readSimulatorOptions({"--pipe", "--keep"}, error)->pipe, "");
    EXPECT_TRUE(readSimulatorOptions({"--help"}, error)->help);
}

TEST(SimulatorOptions, RefusalNamesTheWrongOne) {
    struct Case {
        std::vector<std::string_view> arguments;
        const char* error;
    };
    for (const Case& one : {
             Case{{"--bogus"}, "unknown option --bogus"},
             Case{{"--keep", "bogus", "x"}, "unknown option bogus"},
             Case{{"--port"}, "--port needs a number from 0 to 65535"},
             Case{{"--port", "65536"}, "--port needs a number from 0 to 65535"},
             Case{{"--port", "--keep"}, "--port needs a number from 0 to 65535"},
             Case{{"--answers", "wrong"}, "--answers needs one of equal, different, measured"},
             Case{{"--port", "1", "--pipe"}, "--port and --pipe don't go together"},
         }) {
        std::string error;
        EXPECT_FALSE(readSimulatorOptions(one.arguments, error)) << one.error;
        EXPECT_EQ(error, one.error);
    }
}
