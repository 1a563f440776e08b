// Simulators in Wine name their files by Windows paths.

#include "companion/doctor/simulator_folders.h"
#include "platform/file_system.h"
#include "tests/unit/companion/made_up_machine.h"

#include <gtest/gtest.h>

TEST(WinePrefix, HoldsWhatWindowsPathsName) {
    const TempFolder files;
    files.write("pfx/drive_c/Users/Me/Thing.TXT", "");
    const SimulatorFolder simulator{.name = "", .path = files.path("pfx/drive_c/users/steamuser/AppData")};
    EXPECT_EQ(ownPath(R"(C:\users\me\thing.txt)", simulator), files.path("pfx/drive_c/Users/Me/Thing.TXT"));
    EXPECT_EQ(ownPath("D:/x", simulator), files.path("pfx/dosdevices/d:/x"));
    EXPECT_EQ(ownPath("/usr/bin/x", simulator), "/usr/bin/x");
    EXPECT_EQ(ownPath("x.exe", simulator), std::nullopt);
    EXPECT_EQ(ownPath(R"(C:\x)", SimulatorFolder{.name = "", .path = "/home/me"}), std::nullopt);
}

TEST(WinePrefix, MistakesOfItsSimulatorAreFound) {
    const TempFolder files;
    MadeUpMachine pc(Installation::Steam2020);
    const std::string roaming = "pfx/drive_c/users/steamuser/AppData/Roaming";
    const std::string folder = roaming + "/Microsoft Flight Simulator/";
    pc.host.variables = {{"APPDATA", files.path(roaming)}};
    files.write(folder + "exe.xml", "<SimBase.Document>" + pc.ownEntry() +
                                        MadeUpMachine::entry("Other", R"(C:\Gone.exe)") + "</SimBase.Document>");
    files.write(folder + "UserCfg.opt", R"(InstalledPackagesPath "C:\packages")");
    files.write(folder + "SimConnect.xml",
                "<SimBase.Document><SimConnect.Comm><Protocol>IPv4</Protocol><Port>500</Port>"
                "</SimConnect.Comm></SimBase.Document>");
    pc.files.write("bridge/SimConnect.cfg", "[SimConnect]\nProtocol=IPv4\nPort=500\n");
    files.makeFolder("pfx/drive_c/Packages/community");
    EXPECT_EQ(pc.complaints(),
              (std::vector<std::string>{"other-path-missing", "module-missing", "simconnect-port-low"}));
}

TEST(WinePrefix, OfSteamIsFoundInAnyLibraryOnce) {
    MadeUpMachine pc(Installation::Steam2020);
    pc.host.variables = {{"HOME", pc.files.path("home")}};
    const std::string simulator = "/steamapps/compatdata/2537590/pfx/drive_c/users/steamuser/AppData/Roaming/"
                                  "Microsoft Flight Simulator 2024";
    pc.files.makeFolder("games" + simulator);
    pc.files.write("home/.steam/steam/steamapps/libraryfolders.vdf",
                   "\"libraryfolders\"\n{\n\t\"0\"\n\t{\n\t\t\"path\"\t\t\"" + pc.files.path("games") + "\"\n\t}\n}\n");
    std::filesystem::create_directory(pc.files.path("home/.local"));
    std::filesystem::create_directory(pc.files.path("home/.local/share"));
    std::filesystem::create_symlink(pc.files.path("home/.steam/steam"), pc.files.path("home/.local/share/Steam"));
    const std::vector<SimulatorFolder> folders = simulatorFolders(pc.host.record());
    ASSERT_EQ(folders.size(), 1U);
    EXPECT_EQ(folders[0].path, pc.files.path("games" + simulator));
    EXPECT_EQ(folders[0].name, "MSFS 2024 (Steam)");
    // A Linux program isn't registered there.
    EXPECT_EQ(pc.complaints(), std::vector<std::string>{"never-started"});
}

TEST(LinuxMachine, KnowsADevicesIdsWithoutOpeningIt) {
    const TempFolder files;
    const Machine machine = systemMachine(Platform());
    files.write("node/device/uevent", "DRIVER=hid-generic\nHID_ID=0003:00001234:0000ABCD\nHID_NAME=x\n");
    files.write("cut/device/uevent", "HID_ID=0003:00001234");
    EXPECT_EQ(machine.idsOfDevice(files.path("node")), (UsbIds{0x1234, 0xABCD}));
    EXPECT_EQ(machine.idsOfDevice(files.path("cut")), std::nullopt);
    EXPECT_EQ(machine.idsOfDevice(files.path("none")), std::nullopt);
}
