#pragma once

#include "tests/system/support/child_process.h"

#include <memory>
#include <string>

/// A udev rule that holds while this exists, and the program that applies it to devices that come meanwhile: the
/// machine's own if one runs.
class UdevRule {
public:
    explicit UdevRule(const std::string& text);
    ~UdevRule();
    UdevRule(const UdevRule&) = delete;
    UdevRule& operator=(const UdevRule&) = delete;

private:
    std::unique_ptr<ChildProcess> udev;
};
