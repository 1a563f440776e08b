#pragma once

#include "companion/doctor/machine.h"

#include <string>
#include <vector>

/// A file with rules for devices.
struct UdevRuleFile {
    std::string path;
    /// Without comments.
    std::string text;
    /// A group to which it gives the device and in which the user isn't.
    std::string missingGroup;
};

/// The machine's rules for HID device nodes with this vendor id.
std::vector<UdevRuleFile> udevRulesFor(const UsbIds& ids, const Machine& machine);

/// Why a rule for the boards doesn't give their user the right to open them; empty if nothing is wrong with it.
std::string udevRuleFault(const UdevRuleFile& rule, const UsbIds& ids);
