#include "platform/linux/data_folder.h"

#include "platform/file_system.h"
#include "tests/support/fake_host.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class DataFolder : public testing::Test {
protected:
    DataFolder() {
        permit(folder.path(), 0755);
        fake.variables["HOME"] = "/home/pilot";
        fake.variables["XDG_DATA_HOME"] = "/data of/pilot";
    }
    ~DataFolder() override {
        permit(machine, 0755);
        permit(own, 0755);
    }

    static void permit(const std::string& path, mode_t mode) { chmod(path.c_str(), mode); }

    /// The choice of an ordinary user, whom permissions restrict.
    std::string chosen() {
        const uid_t before = geteuid();
        EXPECT_TRUE(before != 0 || seteuid(65534) == 0);
        std::string folderOfData = dataFolder(machine, fake.record());
        EXPECT_EQ(seteuid(before), 0);
        return folderOfData;
    }

    FakeHost fake;
    const TempFolder folder;
    const std::string machine = folder.makeFolder("lib");
    const std::string own = folder.path("lib/VantrelBridge");
};

TEST_F(DataFolder, IsTheMachinesWhereTheProgramMayWriteOrMakeItsOwn) {
    permit(machine, 0777);
    EXPECT_EQ(chosen(), machine);
    EXPECT_FALSE(FileSystem::exists(own));
    folder.makeFolder("lib/VantrelBridge");
    permit(own, 0777);
    permit(machine, 0555);
    EXPECT_EQ(chosen(), machine);
}

TEST_F(DataFolder, IsTheUsersWhereTheProgramMayDoNeither) {
    permit(machine, 0555);
    EXPECT_EQ(chosen(), "/data of/pilot");
    permit(machine, 0777);
    folder.makeFolder("lib/VantrelBridge");
    permit(own, 0555);
    EXPECT_EQ(chosen(), "/data of/pilot");
}

TEST_F(DataFolder, IsTheUsersWhereAFileIsInTheWayOrNothingIsThere) {
    folder.write("lib/VantrelBridge", "");
    EXPECT_EQ(chosen(), "/data of/pilot");
    EXPECT_EQ(dataFolder(folder.path("absent"), fake.record()), "/data of/pilot");
}

TEST_F(DataFolder, OfTheUserIsInTheHomeFolderWithoutAnAbsoluteVariable) {
    for (const char* value : {"relative", ""}) {
        fake.variables["XDG_DATA_HOME"] = value;
        EXPECT_EQ(dataFolder(folder.path("absent"), fake.record()), "/home/pilot/.local/share");
    }
}

TEST_F(DataFolder, OfTheUserIsInTheListedHomeFolderWithoutAnyVariable) {
    fake.variables.clear();
    const std::string home = getpwuid(geteuid())->pw_dir; // NOLINT(concurrency-mt-unsafe): no other thread runs here
    EXPECT_EQ(dataFolder(folder.path("absent"), fake.record()), FileSystem::join(home, ".local/share"));
}

} // namespace
