#include "simulation/scenarios/scenario_player.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

TEST(ScenarioPlayer, WaitsWhileALaterLineCanStillMakeTheResultRight) {
    Scenario scenario;
    std::string error;
    // FIRST alone is as many lines as the block needs, but not the one that it needs: the limit holds SECOND back.
    ASSERT_TRUE(parseScenario("a.scenario",
                              "board PFD1\n"
                              "control 30 = FIRST\n"
                              "control 31 = SECOND\n"
                              "command FIRST PRESS = (>K:FIRST)\n"
                              "command SECOND PRESS = (>K:SECOND)\n"
                              "config mobiflight.rpnRateLimitMs = 300\n"
                              "> connect\n"
                              "> PFD1 press FIRST\n"
                              "> PFD1 press SECOND\n"
                              "< sim rpn (>K:FIRST) x0..2\n"
                              "< sim rpn (>K:SECOND)\n",
                              scenario, error))
        << error;
    std::ostringstream screen;
    EXPECT_TRUE(ScenarioPlayer(scenario, true, screen).play()) << screen.str();
}

} // namespace
