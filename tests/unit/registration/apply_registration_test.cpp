#include "registration/exe_xml_registrar.h"
#include "tests/unit/registration/exe_xml_samples.h"

#include <gtest/gtest.h>

namespace {

using Samples::entry;
using Samples::entryOf;
using Samples::head;
using Samples::tail;

std::string applied(const std::string& text) {
    return ExeXmlRegistrar::applyRegistration(text, Samples::name, Samples::path, Samples::commandLine);
}

std::string removed(const std::string& text) {
    return ExeXmlRegistrar::removeRegistration(text, Samples::name);
}

TEST(ApplyRegistration, MakesAFreshFileOfNothing) {
    const std::string fresh = "<?xml version=\"1.0\" encoding=\"Windows-1252\"?>\r\n"
                              "<SimBase.Document Type=\"SimConnect\" version=\"1,0\">\r\n"
                              "    <Descr>SimConnect</Descr>\r\n"
                              "    <Filename>EXE.xml</Filename>\r\n"
                              "    <Disabled>False</Disabled>\r\n"
                              "    <Launch.ManualLoad>False</Launch.ManualLoad>\r\n"
                              "</SimBase.Document>\r\n";
    ASSERT_EQ(fresh.size(), 267U);
    const std::size_t lastLine = fresh.find("</SimBase.Document>");
    EXPECT_EQ(applied(""), fresh.substr(0, lastLine) + entry + fresh.substr(lastLine));
    EXPECT_EQ(removed(applied("")), fresh);
}

TEST(ApplyRegistration, MakesAFreshFileOfWhiteSpaceAlone) {
    EXPECT_EQ(applied(" \t\r\n\v\f\n"), applied(""));
}

TEST(ApplyRegistration, HoldsAZeroByteForMoreThanWhiteSpace) {
    const std::string text(" \0 ", 3);
    EXPECT_EQ(applied(text), text + entry);
}

TEST(ApplyRegistration, KeepsWhiteSpaceAroundAText) {
    EXPECT_EQ(applied("\n\n " + tail + " \n\n"), "\n\n" + entry + " " + tail + " \n\n");
}

TEST(ApplyRegistration, PutsANewEntryInFrontOfTheClosingTagsLine) {
    EXPECT_EQ(applied(head + entryOf("A") + tail), head + entryOf("A") + entry + tail);
}

TEST(ApplyRegistration, TakesTheClosingTagInAnyLetterCase) {
    EXPECT_EQ(applied("<x>\n</SIMBASE.document>\n"), "<x>\n" + entry + "</SIMBASE.document>\n");
}

TEST(ApplyRegistration, PutsItInFrontOfTheFirstOfTwoClosingTags) {
    EXPECT_EQ(applied(head + tail + head + tail), head + entry + tail + head + tail);
}

TEST(ApplyRegistration, WritesCarriageReturnsIntoAFileOfLineFeedsToo) {
    EXPECT_EQ(applied("<x>\n</SimBase.Document>\n"), "<x>\n" + entry + "</SimBase.Document>\n");
}

TEST(ApplyRegistration, PutsItInFrontOfWhatSharesTheClosingTagsLine) {
    EXPECT_EQ(applied("<x>\n<!-- end --></SimBase.Document>"), "<x>\n" + entry + "<!-- end --></SimBase.Document>");
}

TEST(ApplyRegistration, WithoutALineFeedPutsItDirectlyInFrontOfTheClosingTag) {
    EXPECT_EQ(applied("<x></SimBase.Document>"), "<x>" + entry + "</SimBase.Document>");
    EXPECT_EQ(applied("<x>\r</SimBase.Document>\r"), "<x>\r" + entry + "</SimBase.Document>\r");
}

TEST(ApplyRegistration, OnTheFirstLineOfManyPutsItDirectlyInFrontOfTheClosingTag) {
    EXPECT_EQ(applied("<x></SimBase.Document>\nmore\n"), "<x>" + entry + "</SimBase.Document>\nmore\n");
}

TEST(ApplyRegistration, WithoutAClosingTagPutsItAtTheVeryEnd) {
    EXPECT_EQ(applied("<x>\n"), "<x>\n" + entry);
    EXPECT_EQ(applied("<x>"), "<x>" + entry);
    EXPECT_EQ(applied("<SimBase.Document/>\n"), "<SimBase.Document/>\n" + entry);
    EXPECT_EQ(applied("</SimBase.Document >\n"), "</SimBase.Document >\n" + entry);
    EXPECT_EQ(applied("<x>\n</SimBase.Documen"), "<x>\n</SimBase.Documen" + entry);
}

TEST(ApplyRegistration, AtTheVeryEndKeepsTrailingWhiteSpaceInFront) {
    EXPECT_EQ(applied("<x> \n \n"), "<x> \n \n" + entry);
}

TEST(ApplyRegistration, ReplacesTheOldEntryWhereItStands) {
    EXPECT_EQ(applied(head + entryOf(Samples::name) + entryOf("B") + tail), head + entry + entryOf("B") + tail);
}

TEST(ApplyRegistration, ReplacesAnEntryOfOtherLetterCaseAndBlanksInsideItsName) {
    EXPECT_EQ(applied(head + entryOf("\r\n  PANEL bridge\r\n ") + tail), head + entry + tail);
}

TEST(ApplyRegistration, ReplacesTheFirstOfTwoEntriesAndLeavesTheSecond) {
    const std::string two = head + entryOf(Samples::name) + entryOf("B") + entryOf(Samples::name) + tail;
    EXPECT_EQ(applied(two), head + entry + entryOf("B") + entryOf(Samples::name) + tail);
}

TEST(ApplyRegistration, ReplacesAnEntryBehindTheClosingTagThere) {
    EXPECT_EQ(applied(head + tail + entryOf(Samples::name)), head + tail + entry);
}

TEST(ApplyRegistration, DropsMembersThatTheOldEntryHadBesides) {
    const std::string old = "    <Launch.Addon>\r\n        <Name>Panel Bridge</Name>\r\n"
                            "        <Disabled>True</Disabled>\r\n        <NewConsole>True</NewConsole>\r\n"
                            "    </Launch.Addon>\r\n";
    EXPECT_EQ(applied(head + old + tail), head + entry + tail);
}

TEST(ApplyRegistration, PassesOverANamelessBlock) {
    const std::string nameless = "    <Launch.Addon>\r\n    </Launch.Addon>\r\n";
    EXPECT_EQ(applied(head + nameless + entryOf(Samples::name) + tail), head + nameless + entry + tail);
}

TEST(ApplyRegistration, TakesAlongTheOtherBlockOnTheLineOfTheOneReplaced) {
    const std::string line =
        "<Launch.Addon><Name>B</Name></Launch.Addon><Launch.Addon><Name>Panel Bridge</Name></Launch.Addon>\r\n";
    EXPECT_EQ(applied(head + line + tail), head + entry + tail);
}

TEST(ApplyRegistration, EscapesAPathAndLaterReplacesTheEntryByItsName) {
    const auto with = [](const std::string& text, const std::string& path) {
        return ExeXmlRegistrar::applyRegistration(text, "R & D", path, "");
    };
    const std::string first = with("", "C:\\A&B\\x.exe");
    EXPECT_NE(first.find("<Name>R &amp; D</Name>\r\n"), std::string::npos);
    EXPECT_NE(first.find("<Path>C:\\A&amp;B\\x.exe</Path>\r\n"), std::string::npos);
    EXPECT_EQ(with(first, "D:\\y.exe"), with("", "D:\\y.exe"));
}

TEST(ApplyRegistration, AddsACommandLineLaterAndTakesItAwayAgain) {
    const std::string without = ExeXmlRegistrar::applyRegistration("", Samples::name, Samples::path, "");
    EXPECT_EQ(without.find("<CommandLine>"), std::string::npos);
    EXPECT_EQ(applied(without), applied(""));
    EXPECT_EQ(ExeXmlRegistrar::applyRegistration(applied(""), Samples::name, Samples::path, ""), without);
}

TEST(ApplyRegistration, TwiceEqualsOnce) {
    for (const std::string& text : {std::string(), head + tail, head + entryOf("A") + tail, std::string("<x>\n")})
        EXPECT_EQ(applied(applied(text)), applied(text)) << text;
}

TEST(ApplyRegistration, BehindABlockLeftOpenAddsASecondEntryThatIsTheOneFoundFromThenOn) {
    const std::string open = "    <Launch.Addon>\r\n        <Name>B</Name>\r\n";
    const std::string once = applied(head + open + tail);
    EXPECT_EQ(once, head + open + entry + tail);
    EXPECT_EQ(applied(once), head + open + entry + entry + tail);
    EXPECT_EQ(applied(applied(once)), applied(once));
    EXPECT_EQ(removed(applied(once)), once);
    EXPECT_EQ(removed(once), once);
}

TEST(ApplyRegistration, TakesANamelessBlockLeftOpenForItsOwnOnceItStandsBehindIt) {
    const std::string open = "    <Launch.Addon>\r\n";
    const std::string once = applied(head + open + tail);
    EXPECT_EQ(once, head + open + entry + tail);
    EXPECT_EQ(applied(once), head + entry + tail);
}

TEST(ApplyRegistration, OnAOneLineFileTheSecondTimeTakesAlongWhatSharesItsLine) {
    const std::string once = applied("<x></SimBase.Document>");
    EXPECT_EQ(applied(once), entry + "</SimBase.Document>");
}

TEST(ApplyRegistration, BehindALastLineWithoutLineFeedTheSecondTimeTakesThatLineAlong) {
    EXPECT_EQ(applied(applied("first\nlast")), "first\n" + entry);
}

TEST(ApplyRegistration, OnAClosingTagsLineThatEndsABlockLandsInThatBlockAndIsNotFoundAgain) {
    const std::string start = head + "    <Launch.Addon>\r\n        <Name>B</Name>\r\n";
    const std::string last = "    </Launch.Addon></SimBase.Document>\r\n";
    const std::string once = applied(start + last);
    EXPECT_EQ(once, start + entry + last);
    EXPECT_EQ(applied(once), start + entry + entry + last);
    EXPECT_EQ(applied(applied(once)), applied(once));
    EXPECT_EQ(removed(once), once);
}

TEST(RemoveRegistration, TakesTheEntrysLinesAndNothingElse) {
    EXPECT_EQ(removed(head + entryOf("A") + entry + entryOf("B") + tail), head + entryOf("A") + entryOf("B") + tail);
}

TEST(RemoveRegistration, LeavesBlankLinesAroundTheEntry) {
    EXPECT_EQ(removed(head + "\r\n\n" + entry + "\n \r\n" + tail), head + "\r\n\n" + "\n \r\n" + tail);
}

TEST(RemoveRegistration, TakesTheFirstOfTwoAndLeavesTheSecond) {
    EXPECT_EQ(removed(head + entryOf("panel bridge") + entry + tail), head + entry + tail);
}

TEST(RemoveRegistration, LeavesATextWithoutTheEntry) {
    for (const std::string& text : {std::string(), std::string(" \r\n"), head + tail, head + entryOf("A") + tail})
        EXPECT_EQ(removed(text), text);
}

TEST(RemoveRegistration, OfAnEntryWithTextOnItsLinesTakesThatTextToo) {
    EXPECT_EQ(removed("a\nb <Launch.Addon><Name>Panel Bridge</Name></Launch.Addon> c\nd"), "a\nd");
}

TEST(RemoveRegistration, OnAOneLineFileTakesAlongWhatSharesItsLines) {
    EXPECT_EQ(removed(applied("<x></SimBase.Document>")), "</SimBase.Document>");
    EXPECT_EQ(removed("<x><Launch.Addon><Name>Panel Bridge</Name></Launch.Addon></SimBase.Document>"), "");
}

TEST(RemoveRegistration, BehindALastLineWithoutLineFeedTakesThatLineAlong) {
    EXPECT_EQ(removed(applied("first\nlast")), "first\n");
}

TEST(RemoveRegistration, BehindABlockLeftOpenFindsNothing) {
    const std::string text = head + "<Launch.Addon><Name>B</Name>\r\n" + entry + tail;
    EXPECT_EQ(removed(text), text);
}

} // namespace
