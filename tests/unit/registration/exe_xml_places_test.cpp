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

class ExeXmlDiscovery : public ExeXmlMachine {
protected:
    Paths discovered() const { return ExeXmlRegistrar::discoverExeXmlPaths(host); }
};

TEST_F(ExeXmlDiscovery, FindsNothingOnAMachineWithoutASimulator) {
    folder.makeFolder("Local");
    folder.makeFolder("Roaming");
    EXPECT_EQ(discovered(), Paths());
}

TEST_F(ExeXmlDiscovery, KeepsTheOrderWhateverWasInstalledFirst) {
    Paths expected;
    for (const Installation installation : {Boxed2024, Boxed, Store2024, StoreState, StoreCache}) {
        expected.insert(expected.begin(), install(installation));
    }
    EXPECT_EQ(discovered(), expected);
    const char other = std::filesystem::path::preferred_separator == '\\' ? '/' : '\\';
    EXPECT_EQ(discovered().front().find(other), std::string::npos) << "another system's separator";
}

TEST_F(ExeXmlDiscovery, KeepsAFolderWithAndWithoutTheFile) {
    const Paths expected{install(StoreState, "text"), install(Boxed)};
    EXPECT_EQ(discovered(), expected);
    EXPECT_FALSE(exists(expected[1]));
}

TEST_F(ExeXmlDiscovery, CountsAFileInTheFoldersPlaceAsThere) {
    folder.write("Roaming/Microsoft Flight Simulator", "");
    EXPECT_EQ(discovered(), Paths{pathOf(Boxed)});
}

TEST_F(ExeXmlDiscovery, CountsAFolderThatCannotBeLookedForAsAbsent) {
    install(Boxed);
    fake.variables["LOCALAPPDATA"] = std::string(100000, 'x');
    EXPECT_EQ(discovered(), Paths{pathOf(Boxed)});
}

TEST_F(ExeXmlDiscovery, UsesTheVariablesOfEachCallAndAnUnsetOneAsEmpty) {
    const std::string inLocal = install(StoreCache);
    const std::string inRoaming = install(Boxed);
    fake.variables["LOCALAPPDATA"] = "";
    EXPECT_EQ(discovered(), Paths{inRoaming});
    fake.variables["LOCALAPPDATA"] = folder.path("Local");
    fake.variables.erase("APPDATA");
    EXPECT_EQ(discovered(), Paths{inLocal});
    fake.variables.clear();
    EXPECT_EQ(discovered(), Paths());
}

} // namespace
