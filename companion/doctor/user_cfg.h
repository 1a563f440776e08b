#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The folder of packages that the text of a UserCfg.opt names; none when it names none. As it is written there: on
/// Windows in UTF-8, and below Wine as a Windows path.
std::optional<std::string> installedPackagesPath(std::string_view text);
