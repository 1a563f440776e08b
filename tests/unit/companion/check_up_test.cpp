#include "companion/setup/check_up.h"

#include "tests/unit/companion/made_up_machine.h"

namespace {

using Pc = MadeUpMachine;

struct RepairableMachine {
    std::string code;
    std::string title;
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
        {"simconnect-port-differs", "MSFS 2020 (Steam), SimConnect.xml", portDiffers},
        {"simconnect-cfg-unusable", "SimConnect.cfg",
         [](Pc& pc) {
             portDiffers(pc);
             pc.files.write("bridge/SimConnect.cfg", "[SimConnect]\nProtocol=IPv5\n");
         }},
        {"community-missing",
         "MSFS 2020 (Steam), MobiFlight module",
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
        std::string error;
        EXPECT_FALSE(checkUp.repair(row.code, "MSFS 2024 (Store)", error));
        EXPECT_EQ(pc.complaints(), std::vector{row.code});
        EXPECT_TRUE(checkUp.repair(row.code, row.title, error)) << error;
        EXPECT_EQ(pc.complaints(), row.rest);
        EXPECT_FALSE(checkUp.repair(row.code, row.title, error)) << "a second time";
    }
}

TEST(CheckUp, MakesNoFolderOnADriveThatIsNotThere) {
    Pc pc(Installation::Steam2020);
    pc.put("UserCfg.opt", "");
    pc.drop("Packages");
    EXPECT_EQ(CheckUp(pc.record(), pc.files.path("bridge/config/config.json")).look().find("make-folder"),
              std::string::npos);
}
