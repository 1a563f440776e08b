#pragma once

#include <map>
#include <string>
#include <string_view>

/// Files that the build embeds in the program, by name.
using EmbeddedFiles = std::map<std::string, std::string_view>;

/// The files of companion/page/web, which every page may use: colours and type, the connection to the program, small
/// helpers.
const EmbeddedFiles& sharedWebFiles();
