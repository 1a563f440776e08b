#include "companion/setup/check_up.h"

#include "tests/unit/companion/made_up_machine.h"

namespace {

using Pc = MadeUpMachine;

struct RepairableMachine {
    std::string code;
    std::string repair;
    std::string path;
    std::function<void(Pc&)> breakIt;
    /// What is still wrong after the repair.
    std::vector<std::string> rest{};
};

void portDiffers(Pc& pc) {
    pc.putSimConnectXml("<Protocol>IPv4</Protocol><Port>5001</Port>");
}

} // namespace

TEST(CheckUp, RepairsWhatItOffersToRepair) {
    const std::vector<RepairableMachine> rows{
        {"simconnect-port-differs", "write-file", "bridge/SimConnect.cfg", portDiffers},
        {"simconnect-cfg-unusable", "write-file", "bridge/SimConnect.cfg",
         [](Pc& pc) {
             portDiffers(pc);
             pc.files.write("bridge/SimConnect.cfg", "[SimConnect]\nProtocol=IPv5\n");
         }},
        {"community-missing",
         "make-folder",
         "Packages/Community",
         [](Pc& pc) {
             pc.put("UserCfg.opt", "");
             pc.drop("Packages/Community");
         },
         {"module-missing"}},
    };
    for (const RepairableMachine& row : rows) {
        Pc pc(Installation::Steam2020);
        row.breakIt(pc);
        ASSERT_EQ(pc.complaints(), std::vector{row.code});
        CheckUp checkUp(pc.record(), pc.files.path("bridge/config/config.json"));
        const std::string path = row.repair == "make-folder" ? pc.path(row.path) : pc.files.path(row.path);
        std::string error;
        EXPECT_FALSE(checkUp.repair(row.repair, path + "x", error));
        EXPECT_EQ(pc.complaints(), std::vector{row.code});
        EXPECT_TRUE(checkUp.repair(row.repair, path, error)) << error;
        EXPECT_EQ(pc.complaints(), row.rest);
        EXPECT_FALSE(checkUp.repair(row.repair, path, error)) << "a second time";
    }
}

TEST(CheckUp, MakesNoFolderOnADriveThatIsNotThere) {
    Pc pc(Installation::Steam2020);
    pc.put("UserCfg.opt", "");
    pc.drop("Packages");
    EXPECT_EQ(CheckUp(pc.record(), pc.files.path("bridge/config/config.json")).look().find("make-folder"),
              std::string::npos);
}
