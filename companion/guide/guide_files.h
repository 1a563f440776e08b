#pragma once

#include <map>
#include <string>
#include <string_view>

/// The documentation's pages that this program reads, built in, by name.
const std::map<std::string, std::string_view>& guideFiles();
