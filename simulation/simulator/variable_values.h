#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

/// The simulator's variables by name, whose case doesn't matter. A variable that was never set is 0. Not synchronised.
class VariableValues {
public:
    /// A local variable, without "L:".
    void setLocal(std::string_view name, double value);
    /// A variable of the aircraft with its index, such as "LIGHT POTENTIOMETER:3", without "A:".
    void setAircraft(std::string_view name, double value);

    double aircraft(std::string_view name) const;
    /// As they were set, sorted ignoring case.
    std::vector<std::string> localNames() const;

    /// The value that code in the simulator's language reads. Only a number or a variable by itself is known,
    /// the latter with a unit or without, as in "(L:NAME)" and "(A:NAME:3, percent over 100)"; units aren't converted.
    /// Any other code reads 0.
    double evaluate(std::string_view code) const;

private:
    struct Local {
        std::string name;
        double value = 0;
    };

    // By lower-case name.
    std::map<std::string, Local> locals;
    std::map<std::string, double> ofAircraft;
};
