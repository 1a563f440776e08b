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
    };
    for (Row row : rows) {
        row.arguments.insert(row.arguments.begin(), "vantrel");
        std::ostringstream printed;
        EXPECT_EQ(
            runVantrel(Platform(), static_cast<int>(row.arguments.size()), row.arguments.data(), printed, printed),
            row.code)
            << row.printed;
        EXPECT_NE(printed.str().find(row.printed), std::string::npos) << printed.str();
    }
}
