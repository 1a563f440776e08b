// The readers of other programs' files, each with all of the input.

#include "companion/doctor/log_check.h"
#include "companion/doctor/module_files.h"
#include "companion/doctor/program_check.h"
#include "companion/doctor/steam_prefixes.h"
#include "companion/doctor/user_cfg.h"
#include "companion/doctor/xml_blocks.h"
#include "tests/fuzz/fuzz_support.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = inputText(data, size);
    const auto packages = installedPackagesPath(text);
    require(!packages || (!packages->empty() && packages->find('"') == std::string::npos), "a folder has a name");
    for (const std::string& library : steamLibraries(text)) {
        require(!library.empty(), "a library has a name");
    }
    const auto version = packageVersion(text);
    require(!version || !isOlder(*version, *version), "a version isn't older than itself");
    packageFiles(text);
    const auto blocks = xmlBlocks(text, "Launch.Addon");
    const auto openTags = static_cast<std::size_t>(std::ranges::count(text, '<'));
    require(blocks.size() <= openTags, "each element has a tag");
    require(lastTroubles(parseLog(text)).size() <= 5, "few troubles are shown");
    marksDownload(std::string(text));
    return 0;
}
