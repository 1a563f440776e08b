#include "simulation/simulator/variable_values.h"

#include "text/ascii.h"

#include <charconv>

void VariableValues::setLocal(std::string_view name, double value) {
    locals[lowerCased(name)] = {std::string(name), value};
}

void VariableValues::setAircraft(std::string_view name, double value) {
    ofAircraft[lowerCased(name)] = value;
}

double VariableValues::aircraft(std::string_view name) const {
    const auto found = ofAircraft.find(lowerCased(name));
    return found == ofAircraft.end() ? 0 : found->second;
}

std::vector<std::string> VariableValues::localNames() const {
    std::vector<std::string> names;
    names.reserve(locals.size());
    for (const auto& [key, local] : locals) {
        names.push_back(local.name);
    }
    return names;
}

double VariableValues::evaluate(std::string_view code) const {
    constexpr std::size_t nameBegin = 3;
    const std::string lower = lowerCased(code);
    double number = 0;
    const auto [end, error] = std::from_chars(lower.data(), lower.data() + lower.size(), number);
    if (error == std::errc() && end == lower.data() + lower.size()) {
        return number;
    }
    if (lower.find(')') != lower.size() - 1) {
        return 0;
    }
    const std::string name = lower.substr(0, lower.find_first_of(",)")).erase(0, nameBegin);
    if (lower.starts_with("(a:")) {
        return aircraft(name);
    }
    const auto local = lower.starts_with("(l:") ? locals.find(name) : locals.end();
    return local == locals.end() ? 0 : local->second.value;
}
