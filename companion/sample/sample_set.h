#pragma once

#include <map>
#include <string>
#include <string_view>

/// The files of config, built in, by name.
const std::map<std::string, std::string_view>& sampleSet();
