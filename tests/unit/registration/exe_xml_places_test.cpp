#include "tests/unit/registration/exe_xml_machine.h"

namespace {

using Paths = std::vector<std::string>;

TEST(ExeXmlCandidates, AreTheFiveInstallationsInOrder) {
    EXPECT_EQ(ExeXmlRegistrar::candidateExeXmlPaths("L", "A"),
              (Paths{"L\\Packages\\Microsoft.FlightSimulator_8wekyb3d8bbwe\\LocalCache\\EXE.xml",
                     "L\\Packages\\Microsoft.FlightSimulator_8wekyb3d8bbwe\\LocalState\\EXE.xml",
                     "L\\Packages\\Microsoft.Limitless_8wekyb3d8bbwe\\LocalCache\\EXE.xml",
                     "A\\Microsoft Flight Simulator\\EXE.xml", "A\\Microsoft Flight Simulator 2024\\EXE.xml"}));
}

TEST(ExeXmlCandidates, OfAnEmptyVariableAreLeftOut) {
    const Paths all = ExeXmlRegistrar::candidateExeXmlPaths("L", "A");
    EXPECT_EQ(ExeXmlRegistrar::candidateExeXmlPaths("L", ""), Paths(all.begin(), all.begin() + 3));
    EXPECT_EQ(ExeXmlRegistrar::candidateExeXmlPaths("", "A"), Paths(all.begin() + 3, all.end()));
    EXPECT_EQ(ExeXmlRegistrar::candidateExeXmlPaths("", ""), Paths());
}

TEST(ExeXmlCandidates, TakeTheVariableAsPlainText) {
    EXPECT_EQ(ExeXmlRegistrar::candidateExeXmlPaths("", "a/b\\").front(), "a/b\\\\Microsoft Flight Simulator\\EXE.xml");
}

using ExeXmlDiscovery = ExeXmlMachine;

TEST_F(ExeXmlDiscovery, FindsNothingOnAMachineWithoutASimulator) {
    folder.makeFolder("Local");
    folder.makeFolder("Roaming");
    EXPECT_EQ(ExeXmlRegistrar::discoverExeXmlPaths(host), Paths());
}

TEST_F(ExeXmlDiscovery, KeepsTheOrderWhateverWasInstalledFirst) {
    const Installation reversed[] = {Boxed2024, Boxed, Store2024, StoreState, StoreCache};
    Paths expected;
    for (const Installation installation : reversed) {
        expected.insert(expected.begin(), install(installation));
    }
    EXPECT_EQ(ExeXmlRegistrar::discoverExeXmlPaths(host), expected);
}

TEST_F(ExeXmlDiscovery, KeepsAFolderWithAndWithoutTheFile) {
    const Paths expected{install(StoreState, "text"), install(Boxed)};
    EXPECT_EQ(ExeXmlRegistrar::discoverExeXmlPaths(host), expected);
    EXPECT_FALSE(exists(expected[1]));
}

TEST_F(ExeXmlDiscovery, CountsAFileInTheFoldersPlaceAsThere) {
    folder.write("Roaming/Microsoft Flight Simulator", "");
    EXPECT_EQ(ExeXmlRegistrar::discoverExeXmlPaths(host), Paths{pathOf(Boxed)});
}

TEST_F(ExeXmlDiscovery, CountsAQuestionThatFailsAsAbsent) {
    install(Boxed);
    fake.variables["LOCALAPPDATA"] = std::string(100000, 'x');
    EXPECT_EQ(ExeXmlRegistrar::discoverExeXmlPaths(host), Paths{pathOf(Boxed)});
}

TEST_F(ExeXmlDiscovery, CountsAnUnsetVariableAsEmpty) {
    install(StoreCache);
    install(Boxed);
    fake.variables.erase("APPDATA");
    EXPECT_EQ(ExeXmlRegistrar::discoverExeXmlPaths(host), Paths{pathOf(StoreCache)});
    fake.variables.clear();
    EXPECT_EQ(ExeXmlRegistrar::discoverExeXmlPaths(host), Paths());
}

TEST_F(ExeXmlDiscovery, LeavesOutTheFilesOfAnEmptyVariable) {
    install(StoreCache);
    install(Boxed);
    fake.variables["LOCALAPPDATA"] = "";
    EXPECT_EQ(ExeXmlRegistrar::discoverExeXmlPaths(host), Paths{pathOf(Boxed)});
}

TEST_F(ExeXmlDiscovery, GivesPathsWithTheSystemsOwnSeparator) {
    install(Boxed);
    const std::string path = ExeXmlRegistrar::discoverExeXmlPaths(host).at(0);
    const char other = std::filesystem::path::preferred_separator == '\\' ? '/' : '\\';
    EXPECT_EQ(path.find(other), std::string::npos) << path;
}

TEST_F(ExeXmlDiscovery, GoesByTheVariablesAtEachCall) {
    install(Boxed);
    ASSERT_EQ(ExeXmlRegistrar::discoverExeXmlPaths(host).size(), 1U);
    fake.variables["APPDATA"] = folder.path("elsewhere");
    EXPECT_EQ(ExeXmlRegistrar::discoverExeXmlPaths(host), Paths());
}

} // namespace
