#pragma once

#include <string_view>

/// What the simulator's public event lists say about the events and variables of a glass cockpit: the name, the unit of
/// the value that goes before it in RPN, and what it does. The simulator silently ignores a misspelt name, so the
/// command check compares names with this list.
///
/// Constant data; any thread may ask.
namespace EventFacts {

/// An event "(>K:NAME)".
struct KeyEvent {
    std::string_view name;
    std::string_view argument; ///< Unit of its value; empty: the event takes none.
    std::string_view effect;
};

/// An event "(>H:NAME)" of a cockpit display. None takes a value.
struct DisplayEvent {
    std::string_view name; ///< Behind "AS1000_PFD_" and "AS1000_MFD_", or whole for what isn't one display's own.
    std::string_view effect;
};

/// A variable "(A:NAME, UNIT)".
struct Variable {
    std::string_view name;
    std::string_view unit; ///< The unit in which commands read it.
    std::string_view meaning;
};

/// Each takes the name as RPN writes it and returns null for one that isn't listed.
const KeyEvent* keyEvent(std::string_view name);
const DisplayEvent* displayEvent(std::string_view name);
const Variable* variable(std::string_view name);

} // namespace EventFacts
