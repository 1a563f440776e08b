// The entry's own text: escaping and layout.

#include "registration/exe_xml_registrar.h"
#include "tests/unit/registration/exe_xml_samples.h"

#include <gtest/gtest.h>

namespace {

using ExeXmlRegistrar::escapeXmlText;
using ExeXmlRegistrar::renderAddonEntry;

TEST(ExeXmlEscape, ReplacesTheThreeCharactersOfMarkupAndNothingElse) {
    std::string others;
    for (int byte = 0; byte < 256; ++byte) {
        if (byte != '&' && byte != '<' && byte != '>') {
            others.push_back(static_cast<char>(byte));
        }
    }
    EXPECT_EQ(escapeXmlText(others), others);
    EXPECT_EQ(escapeXmlText("a & b < c > d"), "a &amp; b &lt; c &gt; d");
    EXPECT_EQ(escapeXmlText("&amp;<<"), "&amp;amp;&lt;&lt;");
    EXPECT_EQ(escapeXmlText(""), "");
}

TEST(ExeXmlEntry, HasSixLinesEndedByCarriageReturnAndLineFeed) {
    EXPECT_EQ(renderAddonEntry(Samples::name, Samples::path, Samples::commandLine), Samples::entry);
}

TEST(ExeXmlEntry, WithAnEmptyCommandLineHasNoLineForIt) {
    EXPECT_EQ(renderAddonEntry("", " E\x80ro ", ""), "    <Launch.Addon>\r\n"
                                                     "        <Name></Name>\r\n"
                                                     "        <Disabled>False</Disabled>\r\n"
                                                     "        <Path> E\x80ro </Path>\r\n"
                                                     "    </Launch.Addon>\r\n");
}

TEST(ExeXmlEntry, EscapesNamePathAndCommandLine) {
    EXPECT_EQ(renderAddonEntry("a<b", "C:\\R&D", "\"x\" > y"), "    <Launch.Addon>\r\n"
                                                               "        <Name>a&lt;b</Name>\r\n"
                                                               "        <Disabled>False</Disabled>\r\n"
                                                               "        <Path>C:\\R&amp;D</Path>\r\n"
                                                               "        <CommandLine>\"x\" &gt; y</CommandLine>\r\n"
                                                               "    </Launch.Addon>\r\n");
}

} // namespace
