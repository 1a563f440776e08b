#pragma once

#include "companion/draft/configuration_draft.h"

#include <string>

// Changes of a command file's text. A control may be listed more than once; the bridge then takes the last command for
// an action and a role, and so do these. False, with the text unchanged, when the text can't take the change.

bool setCommandText(std::string& text, const CommandPlace& place, const std::string& command);

/// Removes a command, with its action and its control if nothing else is left of them. True, too, when there is none.
bool removeCommandText(std::string& text, const CommandPlace& place);

/// Gives every entry of a control another name. True, too, when there is none.
bool renameControlInCommands(std::string& text, const std::string& name, const std::string& newName);
