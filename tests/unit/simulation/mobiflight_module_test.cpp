#include "simulation/simulator/mobiflight_module.h"

#include "tests/support/message_log.h"

#include <gtest/gtest.h>

#include <bit>

namespace {

using Kind = SimulatorRecordKind;
using Texts = std::vector<std::string>;

constexpr const char* registration = "MF.Clients.Add.Bridge";

/// A module whose clients hear what changes in their areas.
class MobiFlightModuleTest : public testing::Test {
protected:
    void SetUp() override {
        areas.setListener(
            [this](const ClientDataArea& area, std::span<const std::uint8_t> before, std::uint32_t session) {
                module.areaWritten(area, before, session);
                note(area, before);
            });
        module.start();
    }

    /// What arrives while `client` writes a command through a definition of 256 bytes.
    Texts command(std::string_view text, const std::string& client = "MobiFlight") {
        areas.write(
            client + ".Command",
            [text](std::span<std::uint8_t> bytes) {
                std::fill_n(bytes.begin(), 256, std::uint8_t{0});
                std::copy(text.begin(), text.end(), bytes.begin());
            },
            1);
        return std::exchange(received, {});
    }
    /// What arrives while a local variable is set.
    Texts set(std::string_view name, double value) {
        variables.setLocal(name, value);
        module.variablesChanged();
        return std::exchange(received, {});
    }
    Texts recorded(Kind kind) const {
        Texts texts;
        for (const SimulatorRecord& record : records.all()) {
            if (record.kind == kind) {
                texts.push_back(record.text);
            }
        }
        return texts;
    }

    ClientDataAreas areas;
    VariableValues variables;
    SimulatorRecords records;
    MobiFlightModule module{areas, variables, records};
    Texts received;
    int valueWrites = 0;

private:
    /// An answer is noted as its text, a value as its place and number; those of other clients with the area's name.
    void note(const ClientDataArea& area, std::span<const std::uint8_t> before) {
        const std::string sender = area.name.starts_with("MobiFlight.") ? "" : area.name + ": ";
        if (area.name.ends_with(".Response") && !std::ranges::equal(area.bytes, before)) {
            received.push_back(sender + reinterpret_cast<const char*>(area.bytes.data()));
        }
        valueWrites += area.name.ends_with(".LVars") ? 1 : 0;
        for (std::size_t place = 0; area.name.ends_with(".LVars") && place < area.bytes.size(); place += 4) {
            if (!std::ranges::equal(before.subspan(place, 4), std::span(area.bytes).subspan(place, 4))) {
                const auto value = std::bit_cast<float>(MessageLog::wordOf(area.bytes, place));
                received.push_back(sender + std::to_string(place / 4) + "=" + std::to_string(value).substr(0, 3));
            }
        }
    }
};

} // namespace

TEST_F(MobiFlightModuleTest, AnswersPingAndVersion) {
    EXPECT_EQ(command("MF.Ping"), Texts{"MF.Pong"});
    EXPECT_EQ(command("MF.Version.Get"), Texts{"MF.Version.1.0.1"});
    EXPECT_EQ(recorded(Kind::Command), (Texts{"MF.Ping", "MF.Version.Get"}));
}

TEST_F(MobiFlightModuleTest, IdenticalCommandIsNotSeenWithoutADummyBetween) {
    const std::string set = "MF.SimVars.Set.1 (>K:X)";
    for (const std::string& text : {set, set, std::string("MF.DummyCmd"), set}) {
        EXPECT_EQ(command(text), Texts());
    }
    EXPECT_EQ(recorded(Kind::Executed), (Texts{"1 (>K:X)", "1 (>K:X)"}));
    EXPECT_EQ(recorded(Kind::Dummy), Texts{"MF.DummyCmd"});
    EXPECT_EQ(recorded(Kind::Unchanged), Texts{set});
}

TEST_F(MobiFlightModuleTest, AnswersSettingDecidesWhichRegistrationsArrive) {
    struct Case {
        ModuleAnswers answers;
        std::array<bool, 3> received;
    };
    // The first registration of a client creates it.
    for (const auto& [answers, heardInTurn] :
         {Case{ModuleAnswers::Equal, {true, false, false}}, Case{ModuleAnswers::Different, {true, true, true}},
          Case{ModuleAnswers::Measured, {true, true, false}}}) {
        module.setAnswers(answers);
        const std::string text = registration + std::to_string(static_cast<int>(answers));
        for (const bool isHeard : heardInTurn) {
            command("MF.DummyCmd");
            EXPECT_EQ(command(text).size(), isHeard ? 1U : 0U) << text;
        }
        command("MF.Ping");
        EXPECT_EQ(command(text).size(), 1U) << text;
    }
}

TEST_F(MobiFlightModuleTest, DifferentAnswersAllArrive) {
    module.setAnswers(ModuleAnswers::Different);
    // More than a byte can count.
    for (int i = 0; i < 300; ++i) {
        command("MF.DummyCmd");
        EXPECT_EQ(command("MF.Ping"), Texts{"MF.Pong"});
    }
}

TEST_F(MobiFlightModuleTest, AreasHaveTheSizesOfTheRealOnes) {
    EXPECT_EQ(areas.find("MobiFlight.Command")->bytes.size(), 1024U);
    EXPECT_EQ(areas.find("MobiFlight.Response")->bytes.size(), 1024U);
    EXPECT_EQ(areas.find("MobiFlight.LVars")->bytes.size(), 4096U);
    EXPECT_EQ(areas.find("MobiFlight.StringVars")->bytes.size(), 8192U);
}

TEST_F(MobiFlightModuleTest, PrefixIsFoundAnywhereButCutOffTheFront) {
    command("xMF.SimVars.Set.1 (>K:X)");
    EXPECT_EQ(recorded(Kind::Executed), Texts{".1 (>K:X)"});
    EXPECT_EQ(command("xxMF.Clients.Add.Second"), Texts{"MF.Clients.Add.d.Second.Finished"});
    set("A", 1);
    command("MF.(L:A)MF.SimVars.Add.");
    command("x MF.SimVars.Add.(L:A)");
    // The code of neither variable is what it was meant to be, but both have their places.
    EXPECT_EQ(command("MF.SimVars.Add.(L:A)"), Texts{"2=1.0"});
}

TEST_F(MobiFlightModuleTest, ClientsHaveTheirOwnListsAndAreas) {
    EXPECT_EQ(command("MF.Clients.Add.Second"), Texts{"MF.Clients.Add.Second.Finished"});
    EXPECT_EQ(command("MF.Ping", "Second"), Texts{"Second.Response: MF.Pong"});
    command("MF.SimVars.Add.(L:B)", "Second");
    command("MF.SimVars.Add.(L:A)");
    EXPECT_EQ(set("B", 1), Texts{"Second.LVars: 0=1.0"});
    EXPECT_EQ(set("A", 0.5), Texts{"0=0.5"});
}

TEST_F(MobiFlightModuleTest, RepeatedRegistrationIsAnsweredAgainAndKeepsTheVariables) {
    const std::string confirmation = "MF.Clients.Add.MobiFlight.Finished";
    EXPECT_EQ(command("MF.Clients.Add.MobiFlight"), Texts{confirmation});
    command("MF.SimVars.Add.(L:A)");
    command("MF.Ping");
    EXPECT_EQ(command("MF.Clients.Add.MobiFlight"), Texts{confirmation});
    EXPECT_EQ(set("A", 1), Texts{"0=1.0"});
}

TEST_F(MobiFlightModuleTest, FailingModuleAnswersError) {
    module.setFailing(true);
    EXPECT_EQ(command(registration), Texts{"MF.Clients.Add.Bridge.Error"});
    module.setFailing(false);
    command("MF.DummyCmd");
    EXPECT_EQ(command(registration), Texts{"MF.Clients.Add.Bridge.Finished"});
}

TEST_F(MobiFlightModuleTest, SilentModuleTakesCommandsAndDeliversValuesLater) {
    command("MF.SimVars.Add.(L:A)");
    module.setSilent(true);
    EXPECT_EQ(command("MF.Ping"), Texts());
    EXPECT_EQ(set("A", 0.5), Texts());
    command("MF.SimVars.Set.1 (>K:X)");
    EXPECT_EQ(recorded(Kind::Command).size(), 2U);
    EXPECT_EQ(recorded(Kind::Executed), Texts{"1 (>K:X)"});
    module.setSilent(false);
    EXPECT_EQ(command("MF.Ping"), (Texts{"0=0.5", "MF.Pong"}));
}

TEST_F(MobiFlightModuleTest, ValueIsWrittenToItsPlaceWhenItIsAddedOrChanges) {
    EXPECT_EQ(command("MF.SimVars.Add.(L:A)"), Texts()) << "it is zero";
    EXPECT_EQ(set("a", 0.5), Texts{"0=0.5"});
    EXPECT_EQ(command("MF.SimVars.Add.(L:A, Number)"), Texts{"1=0.5"});
    variables.setAircraft("LIGHT POTENTIOMETER:3", 0.7);
    EXPECT_EQ(command("MF.SimVars.Add.(A:LIGHT POTENTIOMETER:3, percent over 100)"), Texts{"2=0.7"});
    const int writesBefore = valueWrites;
    set("A", 0.5);
    set("AB", 1);
    EXPECT_EQ(valueWrites, writesBefore);
    EXPECT_EQ(set("A", 1), (Texts{"0=1.0", "1=1.0"}));
}

TEST_F(MobiFlightModuleTest, AnotherProgramOnTheSharedChannelTakesTheFirstPlace) {
    set("LIGHT", 1);
    set("OTHER", 0.5);
    EXPECT_EQ(command("MF.SimVars.Add.(L:LIGHT)"), Texts{"0=1.0"});
    module.sendAsOtherClient("MF.SimVars.Clear");
    module.sendAsOtherClient("MF.SimVars.Add.(L:OTHER)");
    EXPECT_EQ(command("MF.SimVars.Add.(L:LIGHT)"), (Texts{"0=0.0", "0=0.5", "1=1.0"}));
    EXPECT_EQ(records.all().at(1).session, 0U);
    EXPECT_EQ(records.all().back().session, 1U);
}

TEST_F(MobiFlightModuleTest, ClearWritesZerosAndForgets) {
    set("A", 1);
    command("MF.SimVars.Add.(L:A)");
    EXPECT_EQ(command("MF.SimVars.Clear"), Texts{"0=0.0"});
    EXPECT_EQ(set("A", 0.5), Texts());
}

TEST_F(MobiFlightModuleTest, MoreVariablesThanTheAreaHoldsAreDropped) {
    set("A", 1);
    std::size_t written = 0;
    for (int i = 0; i < 1030; ++i) {
        written += command(i % 2 == 0 ? "MF.SimVars.Add.(L:A)" : "MF.SimVars.Add.(L:A, Bool)").size();
    }
    EXPECT_EQ(written, 1024U);
}

TEST_F(MobiFlightModuleTest, StoppedModuleLeavesItsAreasAndForgetsItsClients) {
    command("MF.SimVars.Add.(L:A)");
    module.stop();
    EXPECT_FALSE(module.running());
    EXPECT_EQ(command("MF.Ping"), Texts());
    EXPECT_EQ(set("A", 1), Texts());
    EXPECT_EQ(recorded(Kind::Command), Texts{"MF.SimVars.Add.(L:A)"});
    module.start();
    module.start();
    command("MF.DummyCmd");
    EXPECT_EQ(command("MF.Ping"), Texts{"MF.Pong"});
    EXPECT_EQ(set("A", 0.5), Texts());
}

TEST_F(MobiFlightModuleTest, StartWritesTheVariablesNamesOnce) {
    set("A", 1);
    module.start();
    EXPECT_TRUE(received.empty()) << "it runs already";
    module.stop();
    module.start();
    EXPECT_EQ(received, Texts{"A"});
}

TEST_F(MobiFlightModuleTest, TakesAnAreaAsItIsThatAClientMadeBefore) {
    areas.create("Small.LVars", 4);
    command("MF.Clients.Add.Small");
    set("A", 1);
    EXPECT_EQ(command("MF.SimVars.Add.(L:A)", "Small"), Texts{"Small.LVars: 0=1.0"});
    EXPECT_EQ(command("MF.SimVars.Add.(L:A, Bool)", "Small"), Texts());
}

TEST_F(MobiFlightModuleTest, ListsTheVariablesSorted) {
    set("Zebra", 1);
    set("alpha", 1);
    EXPECT_EQ(command("MF.LVars.List"), (Texts{"MF.LVars.List.Start", "alpha", "Zebra", "MF.LVars.List.End"}));
}

TEST_F(MobiFlightModuleTest, OtherTextsHaveNoEffect) {
    for (const char* text :
         {"MF.Config.MAX_VARS_PER_FRAME.Set.30", "MF.SimVars.AddString.(A:TITLE, string)", "mf.ping", " MF.Ping", ""}) {
        EXPECT_EQ(command(text), Texts()) << text;
    }
    EXPECT_EQ(recorded(Kind::Command).size(), 5U);
}

TEST_F(MobiFlightModuleTest, AnswerHasOldMemoryAfterItsZeroByte) {
    command("MF.Ping");
    const std::vector<std::uint8_t>& bytes = areas.find("MobiFlight.Response")->bytes;
    EXPECT_EQ(bytes[7], 0);
    EXPECT_NE(bytes[8], 0);
    EXPECT_NE(bytes.back(), 0);
}

TEST_F(MobiFlightModuleTest, TextIsCutAtTheAreasEnd) {
    module.setLVarsText(std::string(5000, 'x'));
    const std::vector<std::uint8_t>& bytes = areas.find("MobiFlight.LVars")->bytes;
    EXPECT_EQ(bytes[4094], 'x');
    EXPECT_EQ(bytes[4095], 0);
}
