// What only Linux can show: prefixes of Wine and Proton, and disks that take nothing.

#include "tests/unit/registration/exe_xml_machine.h"

#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <filesystem>

namespace {

/// While it lives, no file can grow, as on a full disk.
class FullDisk {
public:
    FullDisk() : signalBefore(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit none{0, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &none);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, signalBefore);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit before{};
    void (*signalBefore)(int);
};

/// More than a stream holds back until it is closed.
std::string longText() {
    std::string text = Samples::head + Samples::entry;
    for (int i = 0; i < 1000; ++i) {
        text += Samples::entryOf("A");
    }
    return text + Samples::tail;
}

using ExeXmlOnLinux = ExeXmlMachine;

TEST_F(ExeXmlOnLinux, FindsTheFilesOfAWinePrefixWhoseVariablesAreWrittenWithBackslashes) {
    install(Boxed, Samples::head + Samples::tail);
    std::string windowsStyle = folder.path("Roaming");
    std::replace(windowsStyle.begin(), windowsStyle.end(), '/', '\\');
    fake.variables["APPDATA"] = windowsStyle;
    EXPECT_EQ(ExeXmlRegistrar::discoverExeXmlPaths(host), std::vector<std::string>{pathOf(Boxed)});
    EXPECT_EQ(registerIt(), 1);
    EXPECT_EQ(contentOf(pathOf(Boxed)), Samples::head + Samples::entry + Samples::tail);
}

TEST_F(ExeXmlOnLinux, CountsALinkToNowhereAsAbsent) {
    folder.makeFolder("Roaming");
    std::filesystem::create_directory_symlink("nowhere", folder.path("Roaming/Microsoft Flight Simulator"));
    EXPECT_EQ(registerIt(), 0);
    EXPECT_EQ(error, "");
}

TEST_F(ExeXmlOnLinux, WritesThroughAFolderAndAFileThatAreLinksAndBacksUpTheirContent) {
    const std::string real = folder.write("real.xml", Samples::head + Samples::tail);
    folder.makeFolder("Roaming");
    const std::string realFolder = folder.makeFolder("real");
    std::filesystem::create_directory_symlink(realFolder, folder.path("Roaming/Microsoft Flight Simulator"));
    std::filesystem::create_symlink(real, pathOf(Boxed));
    EXPECT_EQ(registerIt(), 1);
    EXPECT_EQ(contentOf(real), Samples::head + Samples::entry + Samples::tail);
    EXPECT_TRUE(std::filesystem::is_symlink(pathOf(Boxed)));
    EXPECT_EQ(contentOf(pathOf(Boxed) + ".bak"), Samples::head + Samples::tail);
}

TEST_F(ExeXmlOnLinux, AFileThatOpensButCannotBeReadStopsTheWorkBeforeItIsWritten) {
    install(StoreCache);
    // It can be opened for reading and writing, but its first byte can't be read.
    std::filesystem::create_symlink("/proc/self/mem", install(StoreState));
    install(Boxed, Samples::head + Samples::tail);
    for (const bool registering : {true, false}) {
        error.clear();
        EXPECT_EQ(registering ? registerIt() : unregisterIt(), 1);
        EXPECT_EQ(error, "EXE.xml could not be read: " + pathOf(StoreState));
        EXPECT_FALSE(exists(pathOf(StoreState) + ".bak"));
        EXPECT_EQ(contentOf(pathOf(Boxed)), Samples::head + Samples::tail);
    }
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(ExeXmlOnLinux, DoesNotSeeAFailureThatComesAsTheFileIsClosed) {
    EXPECT_TRUE(ExeXmlRegistrar::writeExeXml("/dev/full", Samples::head + Samples::tail, error));
    EXPECT_EQ(error, "");
}

TEST_F(ExeXmlOnLinux, AFullDiskStopsTheWorkAtItsFile) {
    for (const bool registering : {true, false}) {
        install(StoreCache, longText());
        install(Boxed, longText());
        error.clear();
        int count = -1;
        {
            const FullDisk disk;
            count = registering ? registerIt() : unregisterIt();
        }
        EXPECT_EQ(count, 0);
        EXPECT_EQ(error, "Failed to write: " + pathOf(StoreCache));
        EXPECT_EQ(contentOf(pathOf(Boxed)), longText());
    }
}

} // namespace
