#include "companion/check/finding_text.h"

#include <gtest/gtest.h>

namespace {

/// About the byte `caret` of the line, which is the character `column`.
Finding finding(const std::string& line, std::size_t column, const std::string& hint = "Do it", std::size_t caret = 0) {
    return {"f.json",
            3,
            column,
            Severity::Warning,
            "some-code",
            "what is wrong",
            hint,
            line,
            caret == 0 ? column - 1 : caret};
}

} // namespace

TEST(FindingText, ShowsThePlaceAsEditorsReadItWithTheLineACaretAndTheHint) {
    EXPECT_EQ(findingText(finding("  \"a\": 1", 3), false),
              "f.json:3:3: warning: what is wrong\n    \"a\": 1\n    ^\n  Do it\n");
    EXPECT_EQ(findingText(finding("", 1, ""), false), "f.json:3:1: warning: what is wrong\n");
}

TEST(FindingText, PutsTheCaretBelowTheCharacter) {
    EXPECT_EQ(findingText(finding("\t\"é\": x", 6, "", 6), false),
              "f.json:3:6: warning: what is wrong\n  \t\"é\": x\n  \t    ^\n");
    EXPECT_EQ(findingText(finding("ab", 3, ""), false), "f.json:3:3: warning: what is wrong\n  ab\n    ^\n");
}

TEST(FindingText, ShowsOnlyAPartOfALongLine) {
    const std::string line = std::string(500, 'a') + "X" + std::string(500, 'b');
    EXPECT_EQ(findingText(finding(line, 501, ""), false), "f.json:3:501: warning: what is wrong\n  " +
                                                              std::string(50, 'a') + 'X' + std::string(49, 'b') +
                                                              "\n  " + std::string(50, ' ') + "^\n");
}

TEST(FindingText, PrintsNothingThatControlsTheTerminal) {
    EXPECT_EQ(findingText(finding("a\rb\x1B[2J", 3, "say \x1B\x7F"), false),
              "f.json:3:3: warning: what is wrong\n  a?b?[2J\n    ^\n  say ??\n");
}

TEST(FindingText, ColoursOnlyTheSeverity) {
    EXPECT_EQ(findingText(finding("", 1, ""), true), "f.json:3:1: \033[1;33mwarning:\033[0m what is wrong\n");
}

TEST(VerdictText, CountsTheFindings) {
    ConfigurationVerdict verdict;
    verdict.bridgeStarts = true;
    verdict.findings = {finding("", 1)};
    EXPECT_EQ(verdictText(verdict), "The bridge would start: 0 errors, 1 warning, 0 hints\n");
    verdict.bridgeStarts = false;
    verdict.findings.clear();
    EXPECT_EQ(verdictText(verdict), "The bridge would not start: 0 errors, 0 warnings, 0 hints\n");
}

TEST(FindingsJson, ReplacesBytesThatAreNotUtf8) {
    Finding broken = finding("", 7);
    broken.message = "a\xFF";
    EXPECT_EQ(findingsJson({broken}), "[\n  {\n    \"file\": \"f.json\",\n    \"line\": 3,\n    \"column\": 7,\n"
                                      "    \"severity\": \"warning\",\n    \"code\": \"some-code\",\n"
                                      "    \"message\": \"a\xEF\xBF\xBD\",\n    \"hint\": \"Do it\"\n  }\n]\n");
    EXPECT_EQ(findingsJson({}), "[]\n");
}
