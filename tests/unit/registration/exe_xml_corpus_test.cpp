// Files in the shapes that exist in the wild, the fuzz target's seeds, each taken through register and unregister on
// disk. Only what is told here may change.

#include "tests/unit/registration/exe_xml_machine.h"

#include <algorithm>
#include <filesystem>
#include <map>

namespace {

enum class Fate {
    /// The entry is new, and leaves no trace.
    ComesAndGoes,
    /// The file is blank: a fresh one stays.
    BecomesFresh,
    /// The entry stood there already, and goes for good.
    ReplacesAndGoes,
    /// The entry shares a line, which goes with it.
    TakesItsLineAlong,
    /// The entry isn't found again: it stays.
    Stays
};

const std::map<std::string, Fate> fates = {
    {"blanks-in-tags.xml", Fate::ComesAndGoes},
    {"code-page-letters.xml", Fate::ComesAndGoes},
    {"comment-before-closing-tag.xml", Fate::ComesAndGoes},
    {"comments.xml", Fate::ComesAndGoes},
    {"cr-only.xml", Fate::TakesItsLineAlong},
    {"crossed-tags.xml", Fate::ComesAndGoes},
    {"crowd.xml", Fate::ComesAndGoes},
    {"cut-inside-a-tag.xml", Fate::TakesItsLineAlong},
    {"doubled-roots.xml", Fate::ComesAndGoes},
    {"empty", Fate::BecomesFresh},
    {"entities-and-cdata.xml", Fate::ComesAndGoes},
    {"entry-ends-on-the-last-line.xml", Fate::Stays},
    {"fresh.xml", Fate::ComesAndGoes},
    {"lf-only.xml", Fate::ComesAndGoes},
    {"lower-case.xml", Fate::ComesAndGoes},
    {"mixed-line-ends.xml", Fate::ComesAndGoes},
    {"nameless.xml", Fate::ComesAndGoes},
    {"nested-entries.xml", Fate::ComesAndGoes},
    {"no-closing-tag-and-no-line-feed.xml", Fate::TakesItsLineAlong},
    {"no-closing-tag.xml", Fate::ComesAndGoes},
    {"no-final-line-feed.xml", Fate::ComesAndGoes},
    {"no-xml", Fate::TakesItsLineAlong},
    {"one-line-behind-declaration.xml", Fate::ComesAndGoes},
    {"one-line.xml", Fate::TakesItsLineAlong},
    {"other-addons.xml", Fate::ComesAndGoes},
    {"other-document.xml", Fate::ComesAndGoes},
    {"own-behind-a-nameless.xml", Fate::ReplacesAndGoes},
    {"own-disabled.xml", Fate::ReplacesAndGoes},
    {"own-in-a-comment.xml", Fate::ReplacesAndGoes},
    {"own-in-other-letters.xml", Fate::ReplacesAndGoes},
    {"own-shares-its-lines.xml", Fate::ReplacesAndGoes},
    {"own-twice.xml", Fate::ReplacesAndGoes},
    {"own-with-more-members.xml", Fate::ReplacesAndGoes},
    {"own-without-command-line.xml", Fate::ReplacesAndGoes},
    {"own.xml", Fate::ReplacesAndGoes},
    {"self-closing-root.xml", Fate::ComesAndGoes},
    {"stray-closing-tags.xml", Fate::ComesAndGoes},
    {"tabs-and-attributes.xml", Fate::ComesAndGoes},
    {"two-entries-on-a-line.xml", Fate::ComesAndGoes},
    {"unterminated-entry.xml", Fate::Stays},
    {"unterminated-name.xml", Fate::ComesAndGoes},
    {"upper-case.xml", Fate::ComesAndGoes},
    {"utf16-big-endian.xml", Fate::ComesAndGoes},
    {"utf16-little-endian.xml", Fate::TakesItsLineAlong},
    {"utf8-mark.xml", Fate::ComesAndGoes},
    {"white-space.xml", Fate::BecomesFresh},
    {"zero-bytes.xml", Fate::ComesAndGoes},
};

const std::string bridge = "VantrelBridgeHID";

class ExeXmlSeed : public ExeXmlMachine, public testing::WithParamInterface<std::string> {
protected:
    void SetUp() override {
        ExeXmlMachine::SetUp();
        ASSERT_TRUE(FileSystem::readFile(std::string(EXE_XML_SEEDS "/") + GetParam(), original));
        install(Boxed, original);
        ASSERT_EQ(ExeXmlRegistrar::registerInExeXml(host, bridge, Samples::path, Samples::commandLine, error), 1);
        registered = contentOf(pathOf(Boxed));
        const int count = ExeXmlRegistrar::unregisterFromExeXml(host, bridge, error);
        wasFoundAgain = count == 1;
        unregistered = contentOf(pathOf(Boxed));
        position = registered.find(entry);
        ASSERT_NE(position, std::string::npos);
    }

    /// What the registration found in the file before: a new entry's place has nothing.
    std::string replaced() const {
        const std::string behind = registered.substr(position + entry.size());
        EXPECT_TRUE(original.ends_with(behind));
        EXPECT_EQ(original.substr(0, position), registered.substr(0, position));
        return original.substr(position, original.size() - behind.size() - position);
    }

    /// Where the line begins that the entry was put on.
    std::size_t lineOfEntry() const {
        const std::size_t lineFeed = registered.rfind('\n', position);
        return lineFeed == std::string::npos ? 0 : lineFeed + 1;
    }

    const std::string entry = ExeXmlRegistrar::renderAddonEntry(bridge, Samples::path, Samples::commandLine);
    std::string original;
    std::string registered;
    std::string unregistered;
    bool wasFoundAgain = false;
    std::size_t position = 0;
};

TEST_P(ExeXmlSeed, SurvivesBothWaysWithOnlyTheToldChanges) {
    switch (fates.at(GetParam())) {
    case Fate::ComesAndGoes:
        EXPECT_EQ(replaced(), "");
        EXPECT_EQ(unregistered, original);
        break;
    case Fate::BecomesFresh:
        EXPECT_EQ(registered, Samples::head + entry + Samples::tail);
        EXPECT_EQ(unregistered, Samples::head + Samples::tail);
        break;
    case Fate::ReplacesAndGoes:
        EXPECT_TRUE(replaced().find("<Launch.Addon>") < replaced().find("</Launch.Addon>"));
        EXPECT_EQ(replaced().find("Weather Reader"), std::string::npos);
        EXPECT_EQ(unregistered, original.substr(0, position) + original.substr(position + replaced().size()));
        break;
    case Fate::TakesItsLineAlong:
        EXPECT_EQ(replaced(), "");
        EXPECT_LT(lineOfEntry(), position);
        EXPECT_EQ(unregistered, original.substr(0, lineOfEntry()) + original.substr(position));
        break;
    case Fate::Stays:
        EXPECT_EQ(replaced(), "");
        EXPECT_FALSE(wasFoundAgain);
        EXPECT_EQ(unregistered, registered);
        break;
    }
}

std::vector<std::string> seedNames() {
    std::vector<std::string> names;
    for (const auto& file : std::filesystem::directory_iterator(FileSystem::fromBytes(EXE_XML_SEEDS)))
        names.push_back(FileSystem::toBytes(file.path().filename()));
    std::sort(names.begin(), names.end());
    return names;
}

std::string testName(const testing::TestParamInfo<std::string>& info) {
    std::string name = info.param;
    std::replace_if(
        name.begin(), name.end(), [](char byte) { return byte == '-' || byte == '.'; }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Of, ExeXmlSeed, testing::ValuesIn(seedNames()), testName);

TEST(ExeXmlSeeds, AreAllToldOfAndAllThere) {
    std::vector<std::string> told;
    for (const auto& [name, fate] : fates)
        told.push_back(name);
    EXPECT_EQ(seedNames(), told);
}

} // namespace
