#pragma once

#include "companion/demo/cockpit_controller.h"
#include "companion/page/page.h"

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>

struct CockpitPageOptions {
    /// Empty: the sample set that is built in.
    std::string configPath;
    /// None: the first free one of the usual ports. 0: any free one.
    std::optional<std::uint16_t> port;
    bool inBrowser = true;
    RigSides sides;
};

/// The page of a cockpit, which must outlive it.
Page cockpitPage(CockpitController& controller);

/// Shows the cockpit on a page until the program is interrupted. False with the reason in `error` if it can't start.
bool runCockpitPage(const CockpitPageOptions& options, std::ostream& screen, std::string& error);
