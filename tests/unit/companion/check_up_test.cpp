#include "companion/setup/check_up.h"

#include "companion/doctor/check_result_text.h"
#include "config/json.h"
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

/// The configuration that the made-up machine's bridge has.
std::string configOf(const Pc& pc) {
    return pc.files.path("bridge/config/config.json");
}

/// What the page offers its user for an answer of the code.
Repair offeredFor(CheckUp& checkUp, const std::string& code) {
    Repair offered;
    for (const JsonValue& answer : JsonParser::parse(checkUp.look()).value.array) {
        if (const JsonValue* const repair = find(answer, "repair"); find(answer, "code")->string == code && repair) {
            offered = {find(*repair, "code")->string, find(*repair, "path")->string, find(*repair, "text")->string};
        }
    }
    return offered;
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
        CheckUp checkUp(pc.record(), configOf(pc));
        const Repair agreed = offeredFor(checkUp, row.code);
        std::string error;
        EXPECT_FALSE(checkUp.repair(row.code, "MSFS 2024 (Store)", agreed, error));
        EXPECT_EQ(pc.complaints(), std::vector{row.code});
        EXPECT_TRUE(checkUp.repair(row.code, row.title, agreed, error)) << error;
        EXPECT_EQ(pc.complaints(), row.rest);
        EXPECT_FALSE(checkUp.repair(row.code, row.title, agreed, error)) << "a second time";
    }
}

TEST(CheckUp, RepairsNothingElseThanWhatItHasShown) {
    Pc pc(Installation::Steam2020);
    portDiffers(pc);
    CheckUp checkUp(pc.record(), configOf(pc));
    const Repair agreed = offeredFor(checkUp, "simconnect-port-differs");
    pc.putSimConnectXml("<Protocol>IPv4</Protocol><Port>5002</Port>");
    std::string error;
    EXPECT_FALSE(checkUp.repair("simconnect-port-differs", "MSFS 2020 (Steam), SimConnect.xml", agreed, error));
    EXPECT_EQ(error, "The repair is a different one now. Look again");
    EXPECT_EQ(pc.complaints(), std::vector<std::string>{"simconnect-port-differs"});
}

TEST(CheckUp, KnowsAPathAgainThatIsNotUtf8) {
    EXPECT_EQ(repairInJson({"make-folder", "J\xFCrgen", ""}), (Repair{"make-folder", "J\xEF\xBF\xBDrgen", ""}));
}

TEST(CheckUp, MakesNoFolderOnADriveThatIsNotThere) {
    Pc pc(Installation::Steam2020);
    pc.put("UserCfg.opt", "");
    pc.drop("Packages");
    EXPECT_EQ(CheckUp(pc.record(), configOf(pc)).look().find("make-folder"), std::string::npos);
}
