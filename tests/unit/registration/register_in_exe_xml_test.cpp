// All files of a machine.

#include "tests/unit/registration/exe_xml_machine.h"

namespace {

using Samples::entry;
using Samples::entryOf;
using Samples::head;
using Samples::tail;

using RegisterInExeXml = ExeXmlMachine;
using UnregisterFromExeXml = ExeXmlMachine;

TEST_F(RegisterInExeXml, WithoutASimulatorWritesNothing) {
    EXPECT_EQ(registerIt(), 0);
    EXPECT_EQ(error, "");
    EXPECT_FALSE(exists(folder.path("Local")));
    EXPECT_FALSE(exists(folder.path("Roaming")));
}

TEST_F(RegisterInExeXml, WritesEveryInstallation) {
    for (const Installation installation : {StoreCache, StoreState, Store2024, Boxed, Boxed2024}) {
        install(installation);
    }
    EXPECT_EQ(registerIt(), 5);
    EXPECT_EQ(error, "");
    for (const Installation installation : {StoreCache, StoreState, Store2024, Boxed, Boxed2024}) {
        EXPECT_EQ(contentOf(pathOf(installation)), head + entry + tail);
        EXPECT_FALSE(exists(pathOf(installation) + ".bak"));
    }
}

TEST_F(RegisterInExeXml, EditsTheFilesThatAreThere) {
    install(StoreCache, head + entryOf("A") + tail);
    install(Boxed, head + entryOf(Samples::name) + entryOf("B") + tail);
    EXPECT_EQ(registerIt(), 2);
    EXPECT_EQ(contentOf(pathOf(StoreCache)), head + entryOf("A") + entry + tail);
    EXPECT_EQ(contentOf(pathOf(Boxed)), head + entry + entryOf("B") + tail);
    EXPECT_EQ(contentOf(pathOf(StoreCache) + ".bak"), head + entryOf("A") + tail);
}

TEST_F(RegisterInExeXml, TheSecondTimeLeavesTheTextAndBacksItUpWithTheEntry) {
    install(Boxed, head + tail);
    registerIt();
    EXPECT_EQ(registerIt(), 1);
    EXPECT_EQ(contentOf(pathOf(Boxed)), head + entry + tail);
    EXPECT_EQ(contentOf(pathOf(Boxed) + ".bak"), head + entry + tail);
}

TEST_F(RegisterInExeXml, ReplacesAFileThatIsEmpty) {
    install(Boxed, "");
    EXPECT_EQ(registerIt(), 1);
    EXPECT_EQ(contentOf(pathOf(Boxed)), head + entry + tail);
    EXPECT_EQ(contentOf(pathOf(Boxed) + ".bak"), "");
}

TEST_F(RegisterInExeXml, StopsAtTheFirstFileThatCannotBeWritten) {
    install(StoreCache);
    FileSystem::makeFolders(pathOf(Store2024));
    install(Boxed, head + tail);
    EXPECT_EQ(registerIt(), 1);
    EXPECT_EQ(error, "Failed to open for write: " + pathOf(Store2024));
    EXPECT_EQ(contentOf(pathOf(StoreCache)), head + entry + tail);
    EXPECT_EQ(contentOf(pathOf(Boxed)), head + tail);
    EXPECT_FALSE(exists(pathOf(Boxed) + ".bak"));
}

TEST_F(RegisterInExeXml, TellsThatTheVeryFirstFileCannotBeWritten) {
    FileSystem::makeFolders(pathOf(StoreCache));
    install(Boxed);
    EXPECT_EQ(registerIt(), 0);
    EXPECT_EQ(error, "Failed to open for write: " + pathOf(StoreCache));
    EXPECT_FALSE(exists(pathOf(Boxed)));
}

TEST_F(RegisterInExeXml, FailsWhereAFileStandsInTheFoldersPlace) {
    folder.write("Roaming/Microsoft Flight Simulator", "");
    EXPECT_EQ(registerIt(), 0);
    EXPECT_EQ(error, "Failed to open for write: " + pathOf(Boxed));
}

TEST_F(RegisterInExeXml, GoesOnAfterABackupThatFailed) {
    install(StoreCache, head + tail);
    FileSystem::makeFolders(pathOf(StoreCache) + ".bak");
    install(Boxed);
    EXPECT_EQ(registerIt(), 2);
    EXPECT_EQ(error, "");
    EXPECT_EQ(contentOf(pathOf(StoreCache)), head + entry + tail);
    EXPECT_EQ(log.linesWith("[WARN] Failed to back up EXE.xml before writing: ").size(), 1U);
}

TEST_F(UnregisterFromExeXml, WithoutASimulatorWritesNothing) {
    EXPECT_EQ(unregisterIt(), 0);
    EXPECT_EQ(error, "");
}

TEST_F(UnregisterFromExeXml, GivesBackWhatWasThereBeforeTheRegistration) {
    install(StoreCache, head + entryOf("A") + tail);
    install(Boxed, "<x>\n</SimBase.Document>\n");
    registerIt();
    EXPECT_EQ(unregisterIt(), 2);
    EXPECT_EQ(contentOf(pathOf(StoreCache)), head + entryOf("A") + tail);
    EXPECT_EQ(contentOf(pathOf(Boxed)), "<x>\n</SimBase.Document>\n");
}

TEST_F(UnregisterFromExeXml, LeavesAFreshFileBehindWhereThereWasNone) {
    install(Boxed);
    registerIt();
    EXPECT_EQ(unregisterIt(), 1);
    EXPECT_EQ(contentOf(pathOf(Boxed)), head + tail);
}

TEST_F(UnregisterFromExeXml, BacksUpTheFileWithTheEntry) {
    install(Boxed, head + entry + tail);
    unregisterIt();
    EXPECT_EQ(contentOf(pathOf(Boxed) + ".bak"), head + entry + tail);
}

TEST_F(UnregisterFromExeXml, WritesAndCountsOnlyTheFilesWithTheEntry) {
    install(StoreCache, head + entryOf("A") + tail);
    install(StoreState);
    install(Store2024, "");
    install(Boxed, head + entry + tail);
    EXPECT_EQ(unregisterIt(), 1);
    EXPECT_EQ(error, "");
    EXPECT_EQ(contentOf(pathOf(Boxed)), head + tail);
    EXPECT_EQ(contentOf(pathOf(StoreCache)), head + entryOf("A") + tail);
    EXPECT_EQ(contentOf(pathOf(Store2024)), "");
    EXPECT_FALSE(exists(pathOf(StoreState)));
    for (const Installation installation : {StoreCache, StoreState, Store2024}) {
        EXPECT_FALSE(exists(pathOf(installation) + ".bak"));
    }
}

TEST_F(UnregisterFromExeXml, TheSecondTimeWritesNothing) {
    install(Boxed, head + entry + tail);
    unregisterIt();
    EXPECT_EQ(unregisterIt(), 0);
    EXPECT_EQ(contentOf(pathOf(Boxed) + ".bak"), head + entry + tail);
}

TEST_F(UnregisterFromExeXml, PassesOverAFolderInAFilesPlace) {
    FileSystem::makeFolders(pathOf(StoreCache));
    install(Boxed, head + entry + tail);
    EXPECT_EQ(unregisterIt(), 1);
    EXPECT_EQ(error, "");
    EXPECT_EQ(contentOf(pathOf(Boxed)), head + tail);
}

TEST_F(UnregisterFromExeXml, TakesOneOfTwoEntriesEachTime) {
    install(Boxed, head + entry + entry + tail);
    EXPECT_EQ(unregisterIt(), 1);
    EXPECT_EQ(contentOf(pathOf(Boxed)), head + entry + tail);
    EXPECT_EQ(unregisterIt(), 1);
    EXPECT_EQ(unregisterIt(), 0);
}

TEST_F(UnregisterFromExeXml, LeavesAnEmptyFileWhereTheEntryWasAll) {
    install(Boxed, entry);
    EXPECT_EQ(unregisterIt(), 1);
    EXPECT_EQ(contentOf(pathOf(Boxed)), "");
}

} // namespace
