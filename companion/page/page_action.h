#pragma once

#include "companion/page/page.h"
#include "config/json.h"

#include <functional>
#include <string>

constexpr int badRequest = 400;

/// Carries out an action of an open tab, an object whose member "do" names it. False with the reason in `error`.
using PageAction = std::function<bool(const JsonValue& action, const std::string& tab, std::string& error)>;

/// The handler of "POST /api/action": reads the action from the request's body.
PageHandler actionHandler(PageAction act);
