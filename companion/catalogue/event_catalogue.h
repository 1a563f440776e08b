#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

/// An event that a command can fire.
struct CatalogueEvent {
    /// As RPN writes it: "K:AP_MASTER", "H:AS1000_PFD_CLR".
    std::string name;
    std::string group;
    std::string description;
    /// What goes before the event, [0] first, such as "feet". Empty for an event without a value.
    std::vector<std::string> values;
    /// How sure the description is, such as "documented".
    std::string sure;
};

/// The simulator's events as far as they are known, from the data files beside this source. Constant; any thread may
/// ask.
class EventCatalogue {
public:
    static const EventCatalogue& instance();

    const std::vector<CatalogueEvent>& events() const { return all; }

    /// Null for an event that isn't listed. Case doesn't matter, as in the simulator.
    const CatalogueEvent* find(std::string_view name) const;

    /// The listed name that a misspelt one most likely means; empty when none is near.
    std::string nearest(std::string_view name) const;

private:
    std::vector<CatalogueEvent> all;
    /// Upper case.
    std::map<std::string, std::size_t, std::less<>> byName;

    EventCatalogue();
    void load(std::string_view json);
};
