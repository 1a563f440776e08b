#pragma once

#include <map>
#include <string>
#include <string_view>

// The files that the build embeds in the program: simulation/cockpit/web and the sample set of config, by file name.

using EmbeddedFiles = std::map<std::string, std::string_view>;

const EmbeddedFiles& sampleFiles();
const EmbeddedFiles& webFiles();
