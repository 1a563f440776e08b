#include "companion/cli/completion_script.h"
#include "companion/cli/completion_words.h"
#include "companion/cli/exit_code.h"
#include "companion/cli/program.h"

#include <CLI/CLI.hpp>
#include <gtest/gtest.h>

#include <sstream>

TEST(Completions, HaveTheCommandsAndOptionsOfTheProgram) {
    CLI::App program("", "vantrel");
    bool flag = false;
    std::string value;
    CLI::App* const command = program.add_subcommand("demo", "Show [it]: all");
    command->add_flag("--fast", flag, "Don't wait");
    command->add_option("--script,-s", value, "Play");
    command->add_option("FILE", value, "A file");
    const std::vector<CommandWord> words = completionWords(program);

    struct Row {
        const char* shell;
        std::vector<const char*> lines;
    };
    const std::vector<Row> rows{
        {"bash", {"'') words=' --help' ;;\n", "'demo') words=' --help --fast --script' ;;\n", "words+='  demo '"}},
        {"zsh",
         {"'demo:Show [it]\\: all'\n", " '--fast[Don'\\''t wait]'", " '--script[Play]:value:_files'",
          "#compdef vantrel\n"}},
        {"fish",
         {"-n __fish_use_subcommand -f -a demo -d 'Show [it]: all'\n",
          "-n '__fish_seen_subcommand_from demo' -l fast -d 'Don\\'t wait'\n",
          "-n '__fish_seen_subcommand_from demo' -l script -r -d 'Play'\n"}},
    };
    for (const Row& row : rows) {
        const std::string script = completionScript(row.shell, words);
        for (const char* line : row.lines) {
            EXPECT_NE(script.find(line), std::string::npos) << row.shell << ": " << line << "\n" << script;
        }
    }
}

TEST(Completions, ArePrintedForTheThreeShellsOnly) {
    for (const auto& [shell, code] : {std::pair{"bash", ExitCode::good}, std::pair{"zsh", ExitCode::good},
                                      std::pair{"fish", ExitCode::good}, std::pair{"cmd", ExitCode::wrongUsage}}) {
        const char* const arguments[] = {"vantrel", "completions", shell};
        std::ostringstream out;
        std::ostringstream err;
        EXPECT_EQ(runVantrel(Platform(), 3, arguments, out, err), code) << shell;
        EXPECT_EQ(out.str().find("--real-simulator") != std::string::npos ||
                      out.str().find("-l real-simulator") != std::string::npos,
                  code == ExitCode::good)
            << shell;
    }
}
