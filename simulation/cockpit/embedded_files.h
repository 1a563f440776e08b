#pragma once

#include <map>
#include <string>
#include <string_view>

// What the build puts into the program: simulation/cockpit/web and the sample set of config, by file name.

using EmbeddedFiles = std::map<std::string, std::string_view>;

const EmbeddedFiles& sampleFiles();
const EmbeddedFiles& webFiles();
