#include "registration/exe_xml_registrar.h"
#include "tests/unit/registration/exe_xml_samples.h"

#include <gtest/gtest.h>

#include <optional>

namespace {

/// What the block takes up of the text; none when there is none.
std::optional<std::string> block(const std::string& text, const std::string& name) {
    std::size_t start = 0;
    std::size_t end = 0;
    if (!ExeXmlRegistrar::findAddonBlock(text, name, start, end))
        return std::nullopt;
    return text.substr(start, end - start);
}

TEST(FindAddonBlock, GivesTheWholeLinesOfTheEntry) {
    const std::string text = Samples::head + Samples::entryOf("A") + Samples::entryOf("B") + Samples::tail;
    std::size_t start = 0;
    std::size_t end = 0;
    ASSERT_TRUE(ExeXmlRegistrar::findAddonBlock(text, "B", start, end));
    EXPECT_EQ(start, Samples::head.size() + Samples::entryOf("A").size());
    EXPECT_EQ(end, text.size() - Samples::tail.size());
}

TEST(FindAddonBlock, LeavesTheIndicesWhenThereIsNone) {
    std::size_t start = 7;
    std::size_t end = 9;
    EXPECT_FALSE(ExeXmlRegistrar::findAddonBlock(Samples::head + Samples::tail, "A", start, end));
    EXPECT_FALSE(ExeXmlRegistrar::findAddonBlock("", "A", start, end));
    EXPECT_EQ(start, 7U);
    EXPECT_EQ(end, 9U);
}

TEST(FindAddonBlock, TakesTagsInAnyLetterCase) {
    const std::string text = "<LAUNCH.ADDON><name>A</NAME></launch.addon>\n";
    EXPECT_EQ(block(text, "A"), text);
}

TEST(FindAddonBlock, TakesTheNameInAnyLetterCase) {
    EXPECT_EQ(block(Samples::entryOf("pAnEl bRIDGE"), "Panel Bridge"), Samples::entryOf("pAnEl bRIDGE"));
}

TEST(FindAddonBlock, HoldsLettersOutsideAsciiForDifferentInEachCase) {
    EXPECT_EQ(block(Samples::entryOf("\xC4rger"), "\xE4rger"), std::nullopt);
    EXPECT_EQ(block(Samples::entryOf("\xE4rger"), "\xE4RGER"), Samples::entryOf("\xE4rger"));
}

TEST(FindAddonBlock, LooksPastWhiteSpaceAroundTheName) {
    const std::string text = Samples::entryOf("\r\n\t \v\fPanel Bridge \r\n    ");
    EXPECT_EQ(block(text, "Panel Bridge"), text);
}

TEST(FindAddonBlock, HoldsWhiteSpaceInsideTheNameForPartOfIt) {
    EXPECT_EQ(block(Samples::entryOf("Panel  Bridge"), "Panel Bridge"), std::nullopt);
}

TEST(FindAddonBlock, TrimsNoWhiteSpaceFromTheWantedName) {
    EXPECT_EQ(block(Samples::entryOf(" A "), " A "), std::nullopt);
}

TEST(FindAddonBlock, TakesNoTagWithWhiteSpaceOrAttributes) {
    EXPECT_EQ(block("<Launch.Addon id=\"1\"><Name>A</Name></Launch.Addon>\n", "A"), std::nullopt);
    EXPECT_EQ(block("<Launch.Addon ><Name>A</Name></Launch.Addon>\n", "A"), std::nullopt);
    EXPECT_EQ(block("<Launch.Addon><Name>A</Name></Launch.Addon >\n", "A"), std::nullopt);
    EXPECT_EQ(block("<Launch.Addon><Name >A</Name></Launch.Addon>\n", "A"), std::nullopt);
}

TEST(FindAddonBlock, MeetsANameByItsEscapedForm) {
    EXPECT_EQ(block(Samples::entryOf("A &amp; B"), "A & B"), Samples::entryOf("A &amp; B"));
    EXPECT_EQ(block(Samples::entryOf("A & B"), "A & B"), std::nullopt);
    EXPECT_EQ(block(Samples::entryOf("A &#38; B"), "A & B"), std::nullopt);
    EXPECT_EQ(block(Samples::entryOf("A &AMP; B"), "A & B"), Samples::entryOf("A &AMP; B"));
}

TEST(FindAddonBlock, TakesNoNameThatOnlyBeginsOrEndsLikeIt) {
    const std::string text = Samples::entryOf("Panel") + Samples::entryOf("Panel Bridge 2") + Samples::entryOf("");
    EXPECT_EQ(block(text, "Panel Bridge"), std::nullopt);
}

TEST(FindAddonBlock, GivesTheFirstOfTwoOfTheName) {
    const std::string first = Samples::entryOf("a");
    const std::string text = Samples::entryOf("B") + first + Samples::entryOf("A");
    EXPECT_EQ(block(text, "A"), first);
}

TEST(FindAddonBlock, PassesOverABlockWithoutAName) {
    const std::string nameless = "<Launch.Addon>\n</Launch.Addon>\n";
    EXPECT_EQ(block(nameless + Samples::entryOf("A"), "A"), Samples::entryOf("A"));
}

TEST(FindAddonBlock, CountsANameOfTheNextBlockForThatBlockAlone) {
    const std::string nameless = "<Launch.Addon></Launch.Addon>\n";
    const std::string next = "<Launch.Addon><Name>A</Name></Launch.Addon>\n";
    EXPECT_EQ(block(nameless + next, "A"), next);
}

TEST(FindAddonBlock, CountsNoNameThatEndsInTheNextBlock) {
    const std::string open = "<Launch.Addon><Name>A</Launch.Addon>\n";
    const std::string next = "<Launch.Addon></Name></Launch.Addon>\n";
    EXPECT_EQ(block(open + next, "A"), std::nullopt);
}

TEST(FindAddonBlock, CountsNoNameBetweenBlocks) {
    EXPECT_EQ(block("<Launch.Addon></Launch.Addon><Name>A</Name>\n", "A"), std::nullopt);
    EXPECT_EQ(block("<Name>A</Name><Launch.Addon></Launch.Addon>\n", "A"), std::nullopt);
}

TEST(FindAddonBlock, TakesTheFirstNameOfABlock) {
    const std::string text = "<Launch.Addon><Name>A</Name><Name>B</Name></Launch.Addon>\n";
    EXPECT_EQ(block(text, "A"), text);
    EXPECT_EQ(block(text, "B"), std::nullopt);
}

TEST(FindAddonBlock, ANamelessBlockBelongsToTheEmptyName) {
    EXPECT_EQ(block("<Launch.Addon></Launch.Addon>", ""), "<Launch.Addon></Launch.Addon>");
    EXPECT_EQ(block(Samples::entryOf(" \r\n "), ""), Samples::entryOf(" \r\n "));
}

TEST(FindAddonBlock, AnUnterminatedBlockEndsTheSearch) {
    EXPECT_EQ(block("<Launch.Addon><Name>A</Name>\n", "A"), std::nullopt);
    EXPECT_EQ(block(Samples::entryOf("B") + "<Launch.Addon>\n<Name>A</Name>", "A"), std::nullopt);
}

TEST(FindAddonBlock, AnUnterminatedBlockReachesToTheEndOfTheNext) {
    const std::string text = "<Launch.Addon>\n<Name>B</Name>\n" + Samples::entryOf("A");
    EXPECT_EQ(block(text, "A"), std::nullopt);
    EXPECT_EQ(block(text, "B"), text);
}

TEST(FindAddonBlock, AClosingTagInFrontOfTheOpeningOneIsPassedOver) {
    EXPECT_EQ(block("</Launch.Addon>\n" + Samples::entryOf("A"), "A"), Samples::entryOf("A"));
}

TEST(FindAddonBlock, FindsAnEntryInsideAComment) {
    EXPECT_EQ(block("<!--\n" + Samples::entryOf("A") + "-->\n", "A"), Samples::entryOf("A"));
}

TEST(FindAddonBlock, TakesAlongWhatSharesItsFirstAndLastLine) {
    const std::string shared = "<!-- x --><Launch.Addon>\n<Name>A</Name>\n</Launch.Addon> <!-- y -->\n";
    EXPECT_EQ(block("first\n" + shared + "last\n", "A"), shared);
}

TEST(FindAddonBlock, TakesAlongAnotherBlockOnItsLine) {
    const std::string line = "<Launch.Addon><Name>A</Name></Launch.Addon><Launch.Addon><Name>B</Name></Launch.Addon>\n";
    EXPECT_EQ(block("x\n" + line + "y\n", "B"), line);
}

TEST(FindAddonBlock, WithoutAnyLineFeedIsTheWholeText) {
    const std::string text = "<SimBase.Document><Launch.Addon><Name>A</Name></Launch.Addon></SimBase.Document>";
    EXPECT_EQ(block(text, "A"), text);
}

TEST(FindAddonBlock, HoldsACarriageReturnAloneForNoLineEnd) {
    const std::string text = "x\r<Launch.Addon><Name>A</Name></Launch.Addon>\ry\r";
    EXPECT_EQ(block(text, "A"), text);
}

TEST(FindAddonBlock, EndsAtTheTextsEndOnALastLineWithoutLineFeed) {
    EXPECT_EQ(block("x\n<Launch.Addon><Name>A</Name></Launch.Addon>", "A"),
              "<Launch.Addon><Name>A</Name></Launch.Addon>");
    EXPECT_EQ(block("x\n<Launch.Addon><Name>A</Name></Launch.Addon> y", "A"),
              "<Launch.Addon><Name>A</Name></Launch.Addon> y");
}

TEST(FindAddonBlock, EndsBehindTheFirstLineFeedOnly) {
    EXPECT_EQ(block("\n\n<Launch.Addon><Name>A</Name></Launch.Addon>\n\n\n", "A"),
              "<Launch.Addon><Name>A</Name></Launch.Addon>\n");
}

TEST(FindAddonBlock, IgnoresATagThatIsCutOffByTheTextsEnd) {
    EXPECT_EQ(block("<Launch.Addon><Name>A</Name></Launch.Addon", "A"), std::nullopt);
    EXPECT_EQ(block("<Launch.Addo", "A"), std::nullopt);
}

} // namespace
