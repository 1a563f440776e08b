#include "simulation/simulator/command_check.h"

#include "simulation/simulator/event_facts.h"

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

TEST(CommandCheck, NamesWhatTheSimulatorWouldIgnore) {
    EXPECT_EQ(faultInCommand("(>K:AP_MASTERS)"), "unknown event (>K:AP_MASTERS)");
    EXPECT_EQ(faultInCommand("(>H:AS1000_PFD_CLEAR)"), "unknown event (>H:AS1000_PFD_CLEAR)");
    EXPECT_EQ(faultInCommand("(>H:AS1000_AFD_CLR)"), "unknown event (>H:AS1000_AFD_CLR)");
    EXPECT_EQ(faultInCommand("K:AP_MASTER"), "unknown word K:AP_MASTER");
    EXPECT_EQ(faultInCommand("(K:AP_MASTER)"), "unknown reference (K:AP_MASTER)");
    EXPECT_EQ(faultInCommand("(A:HEADING_INDICATOR, degrees) (>K:HEADING_BUG_SET)"),
              "unknown variable (A:HEADING_INDICATOR, degrees)");
    EXPECT_EQ(faultInCommand("(A:HEADING INDICATOR) (>K:HEADING_BUG_SET)"), "unknown variable (A:HEADING INDICATOR)");
    EXPECT_EQ(faultInCommand("(>K:AP_MASTER"), "a bracket isn't closed: (>K:AP_MASTER");
}

TEST(CommandCheck, WantsAValueExactlyWhereTheEventTakesOne) {
    EXPECT_EQ(faultInCommand("1 (>K:AP_MASTER)"), "a value is left over at (>K:AP_MASTER)");
    EXPECT_EQ(faultInCommand("1 (>H:AS1000_PFD_CLR)"), "a value is left over at (>H:AS1000_PFD_CLR)");
    EXPECT_EQ(faultInCommand("(>K:HEADING_BUG_SET)"), "(>K:HEADING_BUG_SET) lacks its value in degrees");
    EXPECT_EQ(faultInCommand("1 2 (>K:HEADING_BUG_SET)"), "a value is left over at (>K:HEADING_BUG_SET)");
    EXPECT_EQ(faultInCommand("(>K:AP_MASTER) 1"), "a value is left over at the end");
    EXPECT_EQ(faultInCommand("10 + (>K:HEADING_BUG_SET)"), "+ has less than two values");
    EXPECT_EQ(faultInCommand("near (>K:HEADING_BUG_SET)"), "near has no value");
}

TEST(CommandCheck, WantsTheUnitOfTheEvent) {
    EXPECT_EQ(faultInCommand("(A:HEADING INDICATOR, radians) (>K:HEADING_BUG_SET)"),
              "not in degrees: (A:HEADING INDICATOR, radians)");
    EXPECT_EQ(faultInCommand("10 (A:AIRSPEED INDICATED, knots) + (>K:HEADING_BUG_SET)"),
              "(>K:HEADING_BUG_SET) takes degrees, not knots");
    EXPECT_EQ(faultInCommand("(A:AIRSPEED INDICATED, knots) if{ (>K:AP_MASTER) }"), "if{ takes bool, not knots");
}

TEST(CommandCheck, WantsBlocksClosed) {
    EXPECT_EQ(faultInCommand("1 if{ (>K:AP_MASTER)"), "a block isn't closed");
    EXPECT_EQ(faultInCommand("(>K:AP_MASTER) }"), "} without a block");
    EXPECT_EQ(faultInCommand("els{ (>K:AP_MASTER) }"), "els{ without an if{ block before it");
    EXPECT_EQ(faultInCommand("1 if{ (>K:AP_MASTER) } (>K:AP_MASTER) els{ (>K:AP_MASTER) }"),
              "els{ without an if{ block before it");
    EXPECT_EQ(faultInCommand("1 if{ 1 } (>K:AP_MASTER)"), "a value is left over at }");
    EXPECT_EQ(faultInCommand("1 if { (>K:AP_MASTER) }"), "unknown word if");
    EXPECT_EQ(faultInCommand("(>K:AP_MASTER) if{ (>K:AP_MASTER) }"), "if{ lacks its value in bool");
}

TEST(EventFacts, SayWhatAnEventTakesAndDoes) {
    ASSERT_NE(EventFacts::keyEvent("BAROMETRIC_STD_PRESSURE"), nullptr);
    EXPECT_EQ(EventFacts::keyEvent("BAROMETRIC_STD_PRESSURE")->argument, "altimeter index");
    EXPECT_EQ(EventFacts::keyEvent("BAROMETRIC_STD_PRESSURE")->effect, "standard pressure of that altimeter");
    EXPECT_EQ(EventFacts::keyEvent("barometric_std_pressure"), nullptr);
    ASSERT_NE(EventFacts::displayEvent("AS1000_MFD_CLR_Long"), nullptr);
    EXPECT_EQ(EventFacts::displayEvent("AS1000_MFD_CLR_Long")->effect, "CLR key, held: back to the map");
    EXPECT_EQ(EventFacts::displayEvent("CLR_Long"), nullptr);
    ASSERT_NE(EventFacts::variable("AIRSPEED INDICATED"), nullptr);
    EXPECT_EQ(EventFacts::variable("AIRSPEED INDICATED")->unit, "knots");
}
