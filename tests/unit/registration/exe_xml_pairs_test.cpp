// Registering and unregistering as pairs of files. The fuzz target's seeds are the files before: shapes that exist in
// the wild. Beside them, in `expected`, is what becomes of each:
//   NAME.registered        after registering
//   NAME.registered-again  after registering twice; without such a file the second time changes nothing
//   NAME.unregistered      after registering and unregistering; without such a file all bytes are back
// A new case is a new seed and its files.

#include "platform/file_system.h"
#include "registration/exe_xml_registrar.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace {

const std::string name = "VantrelBridgeHID";

std::string applied(const std::string& text) {
    return ExeXmlRegistrar::applyRegistration(text, name, "C:\\R&D\\VantrelBridgeHID.exe", "--config \"config.json\"");
}

std::string removed(const std::string& text) {
    return ExeXmlRegistrar::removeRegistration(text, name);
}

std::vector<std::string> filesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& file : std::filesystem::directory_iterator(FileSystem::fromBytes(folder))) {
        names.push_back(FileSystem::toBytes(file.path().filename()));
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string seed(const std::string& file) {
    std::string text;
    EXPECT_TRUE(FileSystem::readFile(std::string(EXE_XML_SEEDS "/") + file, text)) << file;
    return text;
}

/// The expected text of that file; `otherwise` where there is none.
std::string expected(const std::string& file, const std::string& otherwise) {
    std::string text = otherwise;
    FileSystem::readFile(std::string(EXE_XML_EXPECTED "/") + file, text);
    return text;
}

class ExeXmlPair : public testing::TestWithParam<std::string> {};

TEST_P(ExeXmlPair, IsRegisteredAndUnregisteredAsExpected) {
    const std::string before = seed(GetParam());
    const std::string registered = expected(GetParam() + ".registered", "(no such file)");
    const std::string unregistered = expected(GetParam() + ".unregistered", before);
    EXPECT_EQ(applied(before), registered);
    EXPECT_EQ(applied(registered), expected(GetParam() + ".registered-again", registered));
    EXPECT_EQ(removed(registered), unregistered);

    std::size_t start = 7;
    std::size_t end = 9;
    if (ExeXmlRegistrar::findAddonBlock(before, name, start, end)) {
        EXPECT_EQ(removed(before), unregistered);
        EXPECT_EQ(before.substr(0, start) + before.substr(end), unregistered);
    } else {
        EXPECT_EQ(removed(before), before);
        EXPECT_EQ(start, 7U);
        EXPECT_EQ(end, 9U);
    }
}

std::string testName(const testing::TestParamInfo<std::string>& info) {
    std::string text = info.param;
    std::replace_if(
        text.begin(), text.end(), [](char byte) { return byte == '-' || byte == '.'; }, '_');
    return text;
}

INSTANTIATE_TEST_SUITE_P(Of, ExeXmlPair, testing::ValuesIn(filesIn(EXE_XML_SEEDS)), testName);

TEST(ExeXmlPairs, HaveASeedForEachExpectedFile) {
    const std::vector<std::string> names = filesIn(EXE_XML_SEEDS);
    std::set<std::string> possible;
    for (const std::string& file : names) {
        possible.insert({file + ".registered", file + ".registered-again", file + ".unregistered"});
    }
    for (const std::string& file : filesIn(EXE_XML_EXPECTED)) {
        EXPECT_TRUE(possible.contains(file)) << file;
    }
}

struct NameCase {
    const char* inFile;
    const char* wanted;
    bool found;
};

TEST(FindAddonBlock, ComparesTheEscapedNameByteForByteExceptAsciiCase) {
    const NameCase cases[] = {
        {"pAnEl bRIDGE", "Panel Bridge", true},
        {"Panel  Bridge", "Panel Bridge", false},
        {"Panel", "Panel Bridge", false},
        {" A ", " A ", false},
        {"\xC4rger", "\xE4rger", false},
        {"\xE4rger", "\xE4RGER", true},
        {"A &amp; B", "A & B", true},
        {"A & B", "A & B", false},
        {"A &#38; B", "A & B", false},
        {"A &AMP; B", "A & B", true},
        {" \r\n ", "", true},
        {"A", "", false},
    };
    std::size_t start = 0;
    std::size_t end = 0;
    EXPECT_TRUE(ExeXmlRegistrar::findAddonBlock("<Launch.Addon></Launch.Addon>", "", start, end));
    for (const NameCase& each : cases) {
        const std::string text = std::string("<Launch.Addon><Name>") + each.inFile + "</Name></Launch.Addon>";
        EXPECT_EQ(ExeXmlRegistrar::findAddonBlock(text, each.wanted, start, end), each.found)
            << each.inFile << " / " << each.wanted;
    }
}

/// Large files of one repeated piece. A scan whose time grows with the square of the size would take hours.
TEST(ApplyRegistration, EditsTwoMegabytesInOnePass) {
    for (const std::string piece :
         {"    <Launch.Addon>\r\n        <Name>Tool</Name>\r\n    </Launch.Addon>\r\n",
          "<Launch.Addon></Launch.Addon>\n", "<Launch.Addon><Name></Launch.Addon>\n", "<<<<<<<<", "<Launch.Addo",
          "</SimBase.Documen", "</Launch.Addon>", "<Name>", "\n", "x"}) {
        std::string text;
        while (text.size() < 2'000'000) {
            text += piece;
        }
        text = "<SimBase.Document>\n" + text + "\n</SimBase.Document>\n";
        const std::string once = applied(text);
        EXPECT_TRUE(applied(once) == once) << piece;
        EXPECT_TRUE(removed(once) == text) << piece;
    }
}

} // namespace
