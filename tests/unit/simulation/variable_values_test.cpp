#include "simulation/simulator/variable_values.h"

#include <gtest/gtest.h>

namespace {

TEST(VariableValues, LocalVariableIsReadWithAUnitOrWithout) {
    VariableValues values;
    values.setLocal("Light", 0.5);
    EXPECT_EQ(values.evaluate("(L:LIGHT)"), 0.5);
    EXPECT_EQ(values.evaluate("(l:light, Number)"), 0.5);
}

TEST(VariableValues, AircraftVariableIsReadByItsIndexAndInAnyUnit) {
    VariableValues values;
    values.setAircraft("LIGHT POTENTIOMETER:3", 0.4);
    EXPECT_EQ(values.evaluate("(A:LIGHT POTENTIOMETER:3, percent over 100)"), 0.4);
    EXPECT_EQ(values.evaluate("(A:Light Potentiometer:3)"), 0.4);
    EXPECT_EQ(values.aircraft("light potentiometer:3"), 0.4);
    EXPECT_EQ(values.evaluate("(A:LIGHT POTENTIOMETER:33)"), 0);
    EXPECT_EQ(values.evaluate("(A:LIGHT POTENTIOMETER)"), 0);
}

TEST(VariableValues, KindsAreApart) {
    VariableValues values;
    values.setLocal("X", 1);
    values.setAircraft("Y", 1);
    EXPECT_EQ(values.evaluate("(A:X)"), 0);
    EXPECT_EQ(values.evaluate("(L:Y)"), 0);
}

TEST(VariableValues, CodeThatIsNoSingleVariableIsZero) {
    VariableValues values;
    values.setLocal("A", 1);
    values.setLocal("", 1);
    for (const char* code : {"", ")", "(", "(L", "(L:A", "L:A)", "(L:A) 2 *", "(L:A) (L:A)", "1 (L:A)", "(K:A)"}) {
        EXPECT_EQ(values.evaluate(code), 0) << code;
    }
}

TEST(VariableValues, LocalNamesAreSortedAsTheyWereSetLast) {
    VariableValues values;
    values.setLocal("Zebra", 1);
    values.setLocal("alpha", 1);
    values.setLocal("ALPHA", 2);
    values.setAircraft("Beta", 1);
    EXPECT_EQ(values.localNames(), (std::vector<std::string>{"ALPHA", "Zebra"}));
}

} // namespace
