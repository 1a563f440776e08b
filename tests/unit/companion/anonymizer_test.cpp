#include "companion/report/anonymizer.h"

#include "tests/support/fake_host.h"

#include <gtest/gtest.h>

#include <utility>

TEST(Anonymizer, ReplacesPrivateNamesOnly) {
    const Anonymizer anonymizer({R"(C:\Users\Anna Maria\)", "anna", {"COCKPIT", "panel.example.org"}});
    const std::vector<std::pair<std::string, std::string>> rows{
        // The home folder, in every way of writing it.
        {R"(C:\Users\Anna Maria\x.log)", R"(<home>\x.log)"},
        {R"("C:\\Users\\Anna Maria\\x")", R"("<home>\\x")"},
        {"c:/users/ANNA MARIA/x", "<home>/x"},
        {R"(C:\Users\Anna Maria)", "<home>"},
        {R"(at C:\Users\Anna Maria: no)", "at <home>: no"},
        {R"(\\?\C:\Users\Anna Maria\x)", R"(\\?\<home>\x)"},
        // The user's name in paths.
        {R"(D:\Anna\x)", R"(D:\<user>\x)"},
        {"/media/anna/disk", "/media/<user>/disk"},
        {"Anna pressed anna", "Anna pressed anna"},
        {R"(D:\Annabel\x)", R"(D:\Annabel\x)"},
        // Other users' folders.
        {R"(C:\Users\Annabel\x)", R"(C:\Users\<user>\x)"},
        {R"("C:\\Users\\Bob Roe\\x")", R"("C:\\Users\\<user>\\x")"},
        {R"(C:\USERS\ANNAMA~1\x)", R"(C:\USERS\<user>\x)"},
        {"/home/bob/x and /home/eve", "/home/<user>/x and /home/<user>"},
        {"\"/home/bob\": 1", "\"/home/<user>\": 1"},
        {R"("C:\Users\Jan Kowalski": 1)", R"("C:\Users\<user>": 1)"},
        {"in C:\\Users\\Jan Kowalski\nx", "in C:\\Users\\<user>\nx"},
        {"in /home/jan kowalski", "in /home/<user>"},
        {R"(C:\Users\O'Neil\AppData)", R"(C:\Users\<user>\AppData)"},
        {R"("C:\Users\O'Neil")", R"("C:\Users\<user>")"},
        {"'/home/bob', 2\n/x", "'/home/<user>', 2\n/x"},
        {"no /home/bob: 1\n", "no /home/<user>: 1\n"},
        {R"(C:\Users\Anna Maria.Nowak\x)", R"(C:\Users\<user>\x)"},
        {"/homes/bob/", "/homes/bob/"},
        {"/home/", "/home/"},
        // The computer.
        {"\\\\cockpit\\share on Cockpit, cockpit-2", "\\\\<computer>\\share on <computer>, cockpit-2"},
        {"panel.example.org, Panel: panels", "<computer>, <computer>: panels"},
        {"VirtualCockpit cockpits", "VirtualCockpit cockpits"},
        // Boards stay.
        {"HID device connected: 00000000000000A1 index=0", "HID device connected: 00000000000000A1 index=0"},
        {"", ""},
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(anonymizer.anonymized(text), expected) << text;
    }
}

TEST(Anonymizer, LeavesAllIfNothingIsKnown) {
    const std::string text = "/root/x, C:\\x, anna";
    EXPECT_EQ(Anonymizer(PrivateNames()).anonymized(text), text);
    EXPECT_EQ(Anonymizer({"/", "", {}}).anonymized(text), text);
}

TEST(Anonymizer, DoesNotTakeTheHomeFolderForAFolderOfUsers) {
    EXPECT_EQ(Anonymizer({"/x/home", "", {}}).anonymized("/x/home/documents"), "<home>/documents");
}

TEST(PrivateNames, ComeFromTheEnvironment) {
    FakeHost host;
    host.variables = {{"HOME", "/home/anna"}, {"USER", "anna"}};
    EXPECT_EQ(privateNames(host.record()).homeFolder, "/home/anna");
    EXPECT_EQ(privateNames(host.record()).userName, "anna");
    host.variables = {{"HOME", "/x"}, {"USER", "y"}, {"USERPROFILE", "C:\\Users\\Anna"}, {"USERNAME", "Anna"}};
    EXPECT_EQ(privateNames(host.record()).homeFolder, "C:\\Users\\Anna");
    EXPECT_EQ(privateNames(host.record()).userName, "Anna");
}
