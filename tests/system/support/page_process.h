#pragma once

#include "tests/system/support/child_process.h"

#include <cpp-httplib/httplib.h>

#include <memory>
#include <string>

/// A run of vantrel that serves a page, and an independent client of that page.
class PageProcess {
public:
    /// `settings` have the command without the options of every page. Returns once it serves, or has failed to.
    explicit PageProcess(ChildProcessSettings settings);

    bool serves() const { return page != nullptr; }
    std::string errorOutput() { return process.errorOutput(); }

    /// Listens as a page does, until `text` comes; false after the limit.
    bool receives(const std::string& text);
    /// Carries out an action of the page.
    bool act(const std::string& action);

    /// The exit code after Ctrl+C.
    std::optional<int> interrupt();

private:
    ChildProcess process;
    std::unique_ptr<httplib::Client> page;
    httplib::Headers token;
};
