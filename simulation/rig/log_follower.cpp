#include "simulation/rig/log_follower.h"

#include "platform/file_system.h"

#include <fstream>
#include <iterator>
#include <utility>

LogFollower::LogFollower(std::string path) : path(std::move(path)) {}

std::vector<LogLine> LogFollower::newLines() {
    std::ifstream file(FileSystem::fromBytes(path), std::ios::binary);
    if (!file) {
        return {};
    }
    file.seekg(0, std::ios::end);
    if (static_cast<std::uint64_t>(file.tellg()) < offset) {
        // The log began a new file.
        offset = 0;
        unfinished.clear();
    }
    file.seekg(static_cast<std::streamoff>(offset));
    const std::string added{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    offset += added.size();
    unfinished += added;

    std::vector<LogLine> lines;
    std::size_t begin = 0;
    for (std::size_t end = unfinished.find('\n'); end != std::string::npos; end = unfinished.find('\n', begin)) {
        const std::string line = unfinished.substr(begin, end - begin);
        lines.push_back(readLogLine(line).value_or(LogLine{"", "INFO", line}));
        begin = end + 1;
    }
    unfinished.erase(0, begin);
    return lines;
}
