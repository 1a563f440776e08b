#include "companion/cli/program.h"

#include "companion/cli/exit_code.h"

#include <gtest/gtest.h>

#include <sstream>

TEST(VantrelProgram, ExplainsWrongArguments) {
    struct Row {
        std::vector<const char*> arguments;
        int code;
        std::string printed;
    };
    const std::vector<Row> rows{
        {{"chekc"}, ExitCode::wrongUsage, "there is no command or option \"chekc\""},
        {{"--no-such-option"}, ExitCode::wrongUsage, "there is no command or option \"--no-such-option\""},
        {{"check", "--no-such-option"}, ExitCode::wrongUsage, "not expected: --no-such-option"},
        {{}, ExitCode::wrongUsage, "A subcommand is required"},
        {{"chekc", "--help"}, ExitCode::good, "Usage: vantrel"},
        {{"--version"}, ExitCode::good, "vantrel "},
        {{"demo", "--script", "absent.scenario"}, ExitCode::couldNotLook, "vantrel: absent.scenario: can't be read\n"},
        {{"demo", "--replay", "absent.log"}, ExitCode::couldNotLook, "vantrel: absent.log: can't be read\n"},
    };
    const Platform platform = systemPlatform();
    for (Row row : rows) {
        row.arguments.insert(row.arguments.begin(), "vantrel");
        std::ostringstream out;
        std::ostringstream err;
        EXPECT_EQ(runVantrel(platform, static_cast<int>(row.arguments.size()), row.arguments.data(), out, err),
                  row.code)
            << row.printed;
        const std::string printed = row.code == ExitCode::good ? out.str() : err.str();
        EXPECT_NE(printed.find(row.printed), std::string::npos) << printed;
    }
}
