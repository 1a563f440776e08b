#pragma once

#include "companion/page/page.h"
#include "companion/setup/setup_controller.h"

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>

struct SetupPageOptions {
    SetupOptions setup;
    /// None: the first free one of the usual ports. 0: any free one.
    std::optional<std::uint16_t> port;
    bool inBrowser = true;
};

/// The page of a controller, which must outlive it.
Page setupPage(SetupController& controller);

/// Shows the setup page until the program is interrupted. False with the reason in `error` if it can't start.
bool runSetupPage(const Platform& platform, const SetupPageOptions& options, std::ostream& screen, std::string& error);
