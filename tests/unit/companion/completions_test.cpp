#include "companion/cli/completion_script.h"
#include "companion/cli/completion_words.h"
#include "companion/cli/completions_command.h"
#include "companion/cli/exit_code.h"

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
    for (const char* shell : {"bash", "zsh", "fish"}) {
        CLI::App program("", "vantrel");
        const CompletionsCommand command(program);
        program.parse(std::string("completions ") + shell);
        std::ostringstream out;
        EXPECT_EQ(command.run(out), ExitCode::good);
        EXPECT_EQ(out.str(), completionScript(shell, completionWords(program)));
        EXPECT_FALSE(out.str().empty());
    }
    CLI::App program("", "vantrel");
    const CompletionsCommand command(program);
    EXPECT_THROW(program.parse("completions cmd"), CLI::ValidationError);
}
