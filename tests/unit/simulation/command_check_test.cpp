#include "simulation/simulator/command_check.h"

#include <gtest/gtest.h>

TEST(CommandCheck, AcceptsEventsWithTheValueThatTheyTake) {
    for (const char* command :
         {"(>K:AP_MASTER)", "1000 (>K:AP_ALT_VAR_INC)", "(>H:AS1000_PFD_CLR)", "(>H:AS1000_VNAV_TOGGLE)",
          "(>H:AS1000_MFD_BARO_INC) (>H:AS1000_MFD_BARO_INC)",
          "(A:AUTOPILOT HEADING LOCK DIR, degrees) 10 + dnor near (>K:HEADING_BUG_SET)",
          "10 (A:AUTOPILOT HEADING LOCK DIR, degrees) + (>K:HEADING_BUG_SET)",
          "(A:AUTOPILOT VERTICAL HOLD, bool) if{ (>K:AP_VS_VAR_INC) } els{ (>K:AP_PITCH_REF_INC_UP) }",
          "(A:AUTOPILOT VERTICAL HOLD, bool) ! if{ (>K:AP_VS_HOLD) } (>K:AP_VS_VAR_INC)"}) {
        EXPECT_EQ(faultInCommand(command), "") << command;
    }
}

TEST(CommandCheck, NamesTheFault) {
    struct Case {
        const char* command;
        const char* fault;
    };
    const Case cases[] = {
        // What the simulator would ignore.
        {"(>K:AP_MASTERS)", "unknown event (>K:AP_MASTERS)"},
        {"(>K:ap_master)", "unknown event (>K:ap_master)"},
        {"(>H:AS1000_PFD_CLEAR)", "unknown event (>H:AS1000_PFD_CLEAR)"},
        {"(>H:AS1000_AFD_CLR)", "unknown event (>H:AS1000_AFD_CLR)"},
        {"K:AP_MASTER", "unknown word K:AP_MASTER"},
        {"(K:AP_MASTER)", "unknown reference (K:AP_MASTER)"},
        {"(A:HEADING_INDICATOR, degrees) (>K:X)", "unknown variable (A:HEADING_INDICATOR, degrees)"},
        {"(A:HEADING INDICATOR) (>K:HEADING_BUG_SET)", "unknown variable (A:HEADING INDICATOR)"},
        {"(>K:AP_MASTER", "a bracket isn't closed: (>K:AP_MASTER"},
        // Values.
        {"1 (>K:AP_MASTER)", "a value is left over at (>K:AP_MASTER)"},
        {"1 (>H:AS1000_PFD_CLR)", "a value is left over at (>H:AS1000_PFD_CLR)"},
        {"(>K:HEADING_BUG_SET)", "(>K:HEADING_BUG_SET) lacks its value in degrees"},
        {"1 2 (>K:HEADING_BUG_SET)", "a value is left over at (>K:HEADING_BUG_SET)"},
        {"(>K:AP_MASTER) 1", "a value is left over at the end"},
        {"10 + (>K:HEADING_BUG_SET)", "+ has less than two values"},
        {"near (>K:HEADING_BUG_SET)", "near has no value"},
        // Units.
        {"(A:HEADING INDICATOR, radians) (>K:X)", "not in degrees: (A:HEADING INDICATOR, radians)"},
        {"10 (A:AIRSPEED INDICATED, knots) + (>K:HEADING_BUG_SET)", "(>K:HEADING_BUG_SET) takes degrees, not knots"},
        {"(A:AIRSPEED INDICATED, knots) if{ (>K:AP_MASTER) }", "if{ takes bool, not knots"},
        // Blocks.
        {"1 if{ (>K:AP_MASTER)", "a block isn't closed"},
        {"(>K:AP_MASTER) }", "} without a block"},
        {"els{ (>K:AP_MASTER) }", "els{ without an if{ block before it"},
        {"1 if{ (>K:AP_MASTER) } (>K:AP_MASTER) els{ (>K:AP_MASTER) }", "els{ without an if{ block before it"},
        {"1 if{ 1 } (>K:AP_MASTER)", "a value is left over at }"},
        {"1 if { (>K:AP_MASTER) }", "unknown word if"},
        {"(>K:AP_MASTER) if{ (>K:AP_MASTER) }", "if{ lacks its value in bool"},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(faultInCommand(one.command), one.fault) << one.command;
    }
}
