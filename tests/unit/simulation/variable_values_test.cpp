#include "simulation/simulator/variable_values.h"

#include <gtest/gtest.h>

TEST(VariableValues, CodeReadsOneVariableByItsKindNameAndIndex) {
    struct Case {
        const char* code;
        double value;
    };
    VariableValues values;
    values.setLocal("Light", 0.5);
    values.setLocal("", 1);
    values.setAircraft("LIGHT POTENTIOMETER:3", 0.4);
    for (const Case& one :
         {Case{"(L:LIGHT)", 0.5}, Case{"(l:light, Number)", 0.5}, Case{"(A:Light Potentiometer:3)", 0.4},
          Case{"(A:LIGHT POTENTIOMETER:3, percent over 100)", 0.4}, Case{"(A:LIGHT POTENTIOMETER:33)", 0},
          Case{"(A:LIGHT POTENTIOMETER)", 0}, Case{"(A:LIGHT)", 0}, Case{"(L:LIGHT POTENTIOMETER:3)", 0},
          Case{"4711", 4711}}) {
        EXPECT_EQ(values.evaluate(one.code), one.value) << one.code;
    }
    for (const char* code : {"", ")", "(", "(L", "(L:LIGHT", "L:LIGHT)", "(L:LIGHT) 2 *", "(L:LIGHT) (L:LIGHT)",
                             "1 (L:LIGHT)", "(K:LIGHT)"}) {
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
