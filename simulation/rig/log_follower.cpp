#include "simulation/rig/log_follower.h"

#include "platform/file_system.h"

#include <fstream>
#include <iterator>
#include <utility>

namespace {

/// "2026-01-31 12:00:00 [LEVEL] message". A line of another form belongs to the message before it.
LogLine parseLine(const std::string& line) {
    const std::size_t open = line.find('[');
    const std::size_t close = line.find("] ");
    if (open == std::string::npos || close == std::string::npos || close < open) {
        return {"INFO", line};
    }
    return {line.substr(open + 1, close - open - 1), line.substr(close + 2)};
}

} // namespace

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
        lines.push_back(parseLine(unfinished.substr(begin, end - begin)));
        begin = end + 1;
    }
    unfinished.erase(0, begin);
    return lines;
}
