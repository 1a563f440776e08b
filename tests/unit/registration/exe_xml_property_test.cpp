// What holds for any file, on generated ones. Seeds are fixed, so that a failure comes again.

#include "registration/exe_xml_registrar.h"
#include "tests/unit/registration/exe_xml_samples.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <iterator>
#include <random>

namespace {

using Samples::entry;
using Samples::entryOf;

std::string applied(const std::string& text) {
    return ExeXmlRegistrar::applyRegistration(text, Samples::name, Samples::path, Samples::commandLine);
}

std::string removed(const std::string& text) {
    return ExeXmlRegistrar::removeRegistration(text, Samples::name);
}

/// Makes files out of whole lines, every entry closed: the shapes in which nothing shares a line with an entry.
class FileMaker {
public:
    explicit FileMaker(std::uint32_t seed) : random(seed) {}

    /// Of entries that aren't ours.
    std::string lines() {
        std::string text;
        for (int count = upTo(6); count > 0; --count)
            text += inSomeForm(piece());
        return text;
    }

    std::string begin() { return mark() + inSomeForm(upTo(1) == 0 ? Samples::head : "<!-- no declaration -->\r\n"); }

    /// With or without the closing tag, with or without a last line feed behind it.
    std::string end() {
        switch (upTo(4)) {
        case 0:
            return "";
        case 1:
            return "</SimBase.Document>";
        case 2:
            return "</simbase.DOCUMENT>\n<!-- more -->\n</SimBase.Document>\n";
        case 3:
            return "  <!-- x --> </SimBase.Document> \r\n\r\n";
        default:
            return Samples::tail;
        }
    }

    /// Our own entry as somebody else may have written it.
    std::string ownEntry() {
        switch (upTo(2)) {
        case 0:
            return inSomeForm(entryOf("PANEL bridge"));
        case 1:
            return inSomeForm(entryOf("\r\n\t Panel Bridge "));
        default:
            return inSomeForm(entry);
        }
    }

    int upTo(int most) { return std::uniform_int_distribution<int>(0, most)(random); }

private:
    std::string piece() {
        switch (upTo(8)) {
        case 0:
            return entryOf("Weather &amp; Wind");
        case 1:
            return entryOf("Panel Bridge 2");
        case 2:
            return "<Launch.Addon>\r\n<Path>nameless</Path>\r\n</Launch.Addon>\r\n";
        case 3:
            return "<!-- <Name>Panel Bridge</Name> -->\r\n";
        case 4:
            return "\r\n \t\r\n";
        case 5:
            return "<launch.addon><NAME>B</NAME></launch.addon><Launch.Addon><Name>C</Name></Launch.Addon>\r\n";
        case 6:
            return "</Launch.Addon>\r\n";
        case 7:
            return "<Launch.Addon>\r\n<Launch.Addon>\r\n<Name>D</Name>\r\n</Launch.Addon>\r\n";
        default:
            return std::string("\xC3\xA9 \xFF \0 & < > \r\n", 15);
        }
    }

    std::string mark() { return upTo(3) == 0 ? "\xEF\xBB\xBF" : ""; }

    /// With its own line ends, or with line feeds alone.
    std::string inSomeForm(std::string text) {
        if (upTo(1) == 0)
            std::erase(text, '\r');
        return text;
    }

    std::mt19937 random;
};

constexpr std::uint32_t files = 5000;

TEST(ExeXmlProperties, ANewEntryIsPutInAndNothingElseChanges) {
    for (std::uint32_t seed = 0; seed < files; ++seed) {
        FileMaker maker(seed);
        const std::string front = maker.begin() + maker.lines();
        const std::string end = maker.end();
        ASSERT_EQ(applied(front + end), front + entry + end) << seed;
    }
}

TEST(ExeXmlProperties, RegisteringTwiceEqualsRegisteringOnce) {
    for (std::uint32_t seed = 0; seed < files; ++seed) {
        FileMaker maker(seed);
        const std::string once = applied(maker.begin() + maker.lines() + maker.end());
        ASSERT_EQ(applied(once), once) << seed;
    }
}

TEST(ExeXmlProperties, UnregisteringANewEntryGivesBackTheOriginalBytes) {
    for (std::uint32_t seed = 0; seed < files; ++seed) {
        FileMaker maker(seed);
        const std::string text = maker.begin() + maker.lines() + maker.end();
        ASSERT_EQ(removed(applied(text)), text) << seed;
    }
}

TEST(ExeXmlProperties, OutsideTheEntryThatIsReplacedAllBytesStay) {
    for (std::uint32_t seed = 0; seed < files; ++seed) {
        FileMaker maker(seed);
        const std::string front = maker.begin() + maker.lines();
        const std::string old = maker.ownEntry();
        const std::string behind = maker.lines() + maker.end();
        ASSERT_EQ(applied(front + old + behind), front + entry + behind) << seed;
        ASSERT_EQ(removed(front + old + behind), front + behind) << seed;
    }
}

/// Pieces of tags in any order, on few lines: nothing of it is well-formed.
std::string debris(std::mt19937& random) {
    const char* const pieces[] = {
        "<Launch.Addon>", "</Launch.Addon>",     "<Name>", "</Name>", "<Name>Panel Bridge</Name>",
        "\r\n",           "</SimBase.Document>", " ",      "<",       "x"};
    std::string text;
    for (int count = std::uniform_int_distribution<int>(0, 25)(random); count > 0; --count)
        text += pieces[std::uniform_int_distribution<std::size_t>(0, std::size(pieces) - 1)(random)];
    return text;
}

TEST(ExeXmlProperties, WhateverTheTextARegistrationPutsOneEntryInPlaceOfOneRange) {
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        const std::string text = "x" + debris(random);
        std::size_t start = 0;
        std::size_t end = 0;
        const bool found = ExeXmlRegistrar::findAddonBlock(text, Samples::name, start, end);
        const std::string result = applied(text);
        const std::size_t at = found ? start : result.find(entry);
        ASSERT_NE(at, std::string::npos) << text;
        const std::size_t behind = found ? end : at;
        ASSERT_EQ(result, text.substr(0, at) + entry + text.substr(behind)) << text;
    }
}

TEST(ExeXmlProperties, WhateverTheTextABlockConsistsOfWholeLines) {
    std::mt19937 random(2);
    int found = 0;
    for (int i = 0; i < 20000; ++i) {
        const std::string text = debris(random);
        std::size_t start = 0;
        std::size_t end = 0;
        if (!ExeXmlRegistrar::findAddonBlock(text, Samples::name, start, end)) {
            ASSERT_EQ(removed(text), text);
            continue;
        }
        ++found;
        ASSERT_LT(start, end);
        ASSERT_LE(end, text.size());
        ASSERT_TRUE(start == 0 || text[start - 1] == '\n') << text;
        ASSERT_TRUE(end == text.size() || text[end - 1] == '\n') << text;
        ASSERT_EQ(removed(text), text.substr(0, start) + text.substr(end)) << text;
    }
    EXPECT_GT(found, 100);
}

// Bounds that a scan whose time grows with the square of the size misses by hours.
class ExeXmlLargeFile : public testing::TestWithParam<const char*> {};

TEST_P(ExeXmlLargeFile, OfTenMegabytesIsEditedInSeconds) {
    std::string text = Samples::head;
    const std::string piece = GetParam();
    while (text.size() < 10'000'000)
        text += piece;
    const auto begin = std::chrono::steady_clock::now();
    const std::string once = applied(text + Samples::tail);
    const bool same = applied(once) == once;
    const bool back = removed(once) == text + Samples::tail;
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(60));
    EXPECT_TRUE(same);
    EXPECT_TRUE(back);
}

INSTANTIATE_TEST_SUITE_P(Of, ExeXmlLargeFile,
                         testing::Values("    <Launch.Addon>\r\n        <Name>Tool</Name>\r\n    </Launch.Addon>\r\n",
                                         "<Launch.Addon></Launch.Addon>\n", "<Launch.Addon><Name></Launch.Addon>\n",
                                         "<<<<<<<<", "<Launch.Addo", "</SimBase.Documen", "</Launch.Addon>", "<Name>",
                                         "\n", "x"));

} // namespace
