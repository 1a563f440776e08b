#pragma once

#include <cstddef>
#include <string_view>

/// What the module in the simulator understands.
namespace ModuleCommands {

/// Empties the list of the variables that we have added.
constexpr std::string_view clearVariables = "MF.SimVars.Clear";
/// Followed by the RPN expression of a variable.
constexpr std::string_view addVariable = "MF.SimVars.Add.";
/// Followed by an RPN command.
constexpr std::string_view runCommand = "MF.SimVars.Set.1 ";

/// Longer commands don't reach the module whole.
constexpr std::size_t longest = 255;

} // namespace ModuleCommands
