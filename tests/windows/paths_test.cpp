// Paths beyond ASCII, from vantrel.exe's command line to what it reads and shows.

#include "tests/windows/served_page.h"
#include "tests/windows/test_console.h"

TEST(PathsOnWindows, CheckReadsAConfigurationInAFolderThatNoCodePageCanName) {
    const TempFolder folder;
    const std::filesystem::path home = FileSystem::fromBytes(folder.path()) / worldWideName;
    std::filesystem::create_directory(home);
    std::ofstream(home / "config.json") << shortConfig;
    std::ofstream(home / "buttons.json") << R"({"buttons": []})";
    for (const wchar_t* const option : {L"--config ", L"--config="}) {
        ChildPipe output;
        const ChildProcess check(
            vantrelCommand(std::wstring(L"check ") + option + L'"' + (home / "config.json").wstring() + L'"'),
            {nullptr, output.writeEnd, output.writeEnd});
        EXPECT_EQ(check.exitCode(), 1U);
        const std::string printed = output.readAll();
        EXPECT_NE(printed.find("The bridge would start: 0 errors"), std::string::npos) << printed;
    }
}

TEST(PathsOnWindows, AreShownByAConsoleOfAnotherCodePage) {
    const TestConsole console;
    ASSERT_NE(GetConsoleOutputCP(), GetACP());
    const ChildProcess check(vantrelCommand(L"check --config \u20AC-\u00E4.json"), console.streams());
    EXPECT_EQ(check.exitCode(), 3U);
    EXPECT_TRUE(console.shows(L"vantrel: there is no \u20AC-\u00E4.json")) << console.screen();
}

TEST(PathsOnWindows, AreUtf8WhereOutputIsRedirectedTo) {
    ChildPipe output;
    const ChildProcess check(vantrelCommand(L"check --config \u20AC-\u00E4.json"),
                             {nullptr, output.writeEnd, output.writeEnd});
    EXPECT_EQ(check.exitCode(), 3U);
    EXPECT_EQ(output.readAll(), "vantrel: there is no \xE2\x82\xAC-\xC3\xA4.json\r\n");
}
