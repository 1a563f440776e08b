#pragma once

#include <map>
#include <string>
#include <string_view>

/// The data files of this folder, built in, by name.
const std::map<std::string, std::string_view>& catalogueFiles();
