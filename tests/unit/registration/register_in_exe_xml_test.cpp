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

TEST_F(UnregisterFromExeXml, WithoutASimulatorWritesNothing) {
    EXPECT_EQ(unregisterIt(), 0);
    EXPECT_EQ(error, "");
}

TEST_F(UnregisterFromExeXml, WritesBacksUpAndCountsOnlyTheFilesWithTheEntry) {
    install(StoreCache, head + entryOf("A") + tail);
    install(StoreState);
    install(Store2024, "");
    install(Boxed, head + entry + tail);
    // The second time there is no entry any more.
    for (const int count : {1, 0}) {
        EXPECT_EQ(unregisterIt(), count);
        EXPECT_EQ(error, "");
        EXPECT_EQ(contentOf(pathOf(Boxed)), head + tail);
        EXPECT_EQ(contentOf(pathOf(Boxed) + ".bak"), head + entry + tail);
    }
    EXPECT_EQ(contentOf(pathOf(StoreCache)), head + entryOf("A") + tail);
    EXPECT_EQ(contentOf(pathOf(Store2024)), "");
    EXPECT_FALSE(exists(pathOf(StoreState)));
    for (const Installation installation : {StoreCache, StoreState, Store2024}) {
        EXPECT_FALSE(exists(pathOf(installation) + ".bak"));
    }
}

TEST_F(UnregisterFromExeXml, SkipsAFolderInAFilesPlace) {
    FileSystem::makeFolders(pathOf(StoreCache));
    install(Boxed, head + entry + tail);
    EXPECT_EQ(unregisterIt(), 1);
    EXPECT_EQ(error, "");
    EXPECT_EQ(contentOf(pathOf(Boxed)), head + tail);
}

} // namespace
