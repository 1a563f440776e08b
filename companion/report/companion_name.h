#pragma once

/// What this program calls itself.
constexpr const char* companionName = "vantrel";
