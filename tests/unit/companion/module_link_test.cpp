#include "companion/trial/module_link.h"

#include "companion/trial/replay_shortfall.h"
#include "tests/unit/companion/simulator_platform.h"

#include <atomic>
#include <bit>

namespace {

using namespace std::chrono_literals;

class ModuleLinkTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(simulator.start(0, error)) << error; }

    bool startAndWaitFor(LinkState state) {
        return link.start({}, error) && waitUntil([&] { return link.state() == state; });
    }

    /// The value, or a number that no variable has.
    float read(const std::string& expression) { return link.read(expression, 60s, error).value_or(-999); }

    std::string error;
    VirtualSimulator simulator;
    std::atomic<bool> processRuns{true};
    const Platform platform = simulatorPlatform(simulator, processRuns);
    ModuleLink link{platform.simConnect, platform.host};
};

} // namespace

TEST_F(ModuleLinkTest, SendsACommandThatTheModuleRuns) {
    ASSERT_TRUE(startAndWaitFor(LinkState::Ready));
    EXPECT_TRUE(link.send("(>K:AP_MASTER)", error)) << error;
    EXPECT_TRUE(simulator.waitForText(SimulatorRecordKind::Executed, "1 (>K:AP_MASTER)"));
    link.stop();
    EXPECT_TRUE(simulator.waitForSessionCount(0));
    EXPECT_FALSE(link.send("(>K:AP_MASTER)", error));
}

TEST_F(ModuleLinkTest, ReadsValuesAlsoZeroAndEqualOnes) {
    ASSERT_TRUE(startAndWaitFor(LinkState::Ready));
    simulator.setAircraftVariable("FUEL:1", 0.25);
    EXPECT_EQ(read("(A:FUEL:1, gallons)"), 0.25F);
    EXPECT_EQ(read("(A:FUEL:1, gallons)"), 0.25F);
    EXPECT_EQ(read("(L:UNKNOWN)"), 0.F);
    simulator.setAircraftVariable("FUEL:1", 8);
    EXPECT_EQ(read("(A:FUEL:1)"), 8.F);
    // Each read clears before it and behind it, so nothing is left for the module to evaluate.
    EXPECT_TRUE(simulator.waitForText(SimulatorRecordKind::Command, "MF.SimVars.Clear", 8));
}

TEST_F(ModuleLinkTest, ReadsAgainInTheNextRun) {
    simulator.setLVar("GEAR", 3);
    for (int run = 0; run < 3; ++run) {
        ModuleLink another(platform.simConnect, platform.host);
        ASSERT_TRUE(another.start({}, error));
        ASSERT_TRUE(waitUntil([&] { return another.state() == LinkState::Ready; }));
        EXPECT_EQ(another.read("(L:GEAR)", 60s, error), 3.F) << error;
    }
}

TEST_F(ModuleLinkTest, LeavesTheSharedVariablesAlone) {
    SimulatorClient bridge(simulator);
    bridge.attach();
    simulator.setLVar("LIGHT", 5);
    bridge.command("MF.SimVars.Add.(L:LIGHT)");
    ASSERT_TRUE(simulator.waitForKind(SimulatorRecordKind::Command));
    ASSERT_TRUE(startAndWaitFor(LinkState::Ready));
    EXPECT_EQ(read("(L:OTHER)"), 0.F);
    EXPECT_TRUE(link.send("1", error));
    bridge.command("MF.SimVars.Add.(L:SECOND)");
    simulator.setLVar("SECOND", 6);
    simulator.setLVar("LIGHT", 7);
    const auto lastAt = [&](std::size_t offset) {
        const std::vector<std::uint32_t> words = bridge.wordsOf(SimulatorClient::lvarsRequest, offset);
        return words.empty() ? 0.F : std::bit_cast<float>(words.back());
    };
    EXPECT_TRUE(waitUntil([&] {
        bridge.dispatch();
        return lastAt(0) == 7.F && lastAt(4) == 6.F;
    }));
}

TEST_F(ModuleLinkTest, SaysHowFarItHasCome) {
    simulator.stopModule();
    simulator.refuseOpens(true);
    processRuns = false;
    ASSERT_TRUE(startAndWaitFor(LinkState::NoSimulator));
    EXPECT_FALSE(link.send("1", error));
    EXPECT_EQ(error, "SimConnect is not connected");
    processRuns = true;
    ASSERT_TRUE(waitUntil([&] { return link.state() == LinkState::Refused; }));
    EXPECT_EQ(link.refusal(), "SimConnect_Open failed (0x80004005)");
    simulator.refuseOpens(false);
    ASSERT_TRUE(waitUntil([&] { return link.state() == LinkState::ModuleSilent; }));
    EXPECT_FALSE(link.read("1", 1ms, error));
    EXPECT_EQ(error, "MobiFlight not ready");
    simulator.startModule();
    EXPECT_TRUE(waitUntil([&] { return link.state() == LinkState::Ready; }));
}

TEST_F(ModuleLinkTest, ReadOfASilentModuleEndsAtItsLimit) {
    ASSERT_TRUE(startAndWaitFor(LinkState::Ready));
    simulator.silenceModule(true);
    EXPECT_FALSE(link.read("1", 50ms, error));
    EXPECT_EQ(error, "the module hasn't delivered the value");
}

TEST(ReplayShortfall, SaysHowFarItCame) {
    struct Row {
        std::size_t played;
        bool interrupted;
        LinkState end;
        std::string text;
    };
    for (const auto& [played, interrupted, end, text] :
         {Row{3, false, LinkState::Ready, ""}, Row{3, true, LinkState::Ready, ""},
          Row{2, true, LinkState::Ready, "ended before the record's end: 2 of 3 reports were played"},
          Row{2, false, LinkState::Ready,
              "the simulator or its module was gone for a while: 2 of 3 reports were played"},
          Row{3, false, LinkState::ModuleSilent,
              "the simulator or its module has gone: 3 of 3 reports were played, and the last commands may be lost"}}) {
        EXPECT_EQ(replayShortfall(played, 3, interrupted, end), text);
    }
}
