#include "companion/doctor/log_check.h"

#include "app/app_paths.h"
#include "app/program_names.h"
#include "companion/guide/message_guide.h"
#include "platform/file_system.h"
#include "text/ascii.h"

#include <algorithm>
#include <optional>
#include <ranges>
#include <utility>

namespace {

constexpr std::string_view runBegin = "Initializing application";
/// More are not read; the latest say most.
constexpr std::size_t mostTroubles = 5;

bool isTrouble(const LogLine& line) {
    // The check of SimConnect.dll answers this one.
    return (line.level == "WARN" || line.level == "ERROR") &&
           line.message.find("; using the built-in SimConnect client") == std::string::npos;
}

/// A simulator that is still loading refuses sessions.
bool isOverOnceConnected(const LogLine& line) {
    return line.message.starts_with("Waiting for SimConnect connection");
}

/// Adds a line as the latest of its message. "Failed to initialize: REASON" is left out after its reason.
void addTrouble(std::vector<LogLine>& troubles, const LogLine& line) {
    std::erase_if(troubles, [&line](const LogLine& earlier) { return earlier.message == line.message; });
    if (std::ranges::none_of(
            troubles, [&line](const LogLine& earlier) { return line.message.ends_with(": " + earlier.message); })) {
        troubles.push_back(line);
    }
}

/// With a full stop.
std::string sentence(const std::string& text) {
    return text.empty() || text.ends_with('.') ? text : text + '.';
}

std::string remedyText(const MessageExplanation& explanation) {
    if (explanation.meaning.empty() && explanation.remedy.empty()) {
        return "docs/troubleshooting.md explains the log.";
    }
    return std::string(trimmed(sentence(explanation.meaning) + ' ' + sentence(explanation.remedy)));
}

void judgeTrouble(const LogLine& line, const std::string& path, CheckResults& results) {
    const MessageExplanation explanation = MessageGuide::instance().explain(line.message);
    const bool isHarmless =
        !explanation.meaning.empty() && (explanation.remedy.empty() || explanation.remedy == "Nothing");
    CheckTopic topic(results, "Log, " + line.time);
    const std::string remedy = remedyText(explanation);
    if (line.level == "ERROR") {
        topic.fault("log-error", line.message + " (" + path + ")", remedy);
    } else if (!isHarmless) {
        topic.warning("log-warning", line.message + " (" + path + ")", remedy);
    }
}

} // namespace

std::vector<std::string> logFolders(const Host& host) {
    const std::string exeDir = exeDirectory(host);
    const std::string dataFolder = commonAppDataDirectory(host);
    std::vector<std::string> folders{logDirectory(false, dataFolder, exeDir)};
    if (folders.front() != exeDir) {
        folders.push_back(exeDir);
    }
    return folders;
}

std::string logPath(const std::string& folder) {
    return FileSystem::join(folder, std::string(programName) + ".log");
}

std::vector<LogLine> parseLog(std::string_view text) {
    std::vector<LogLine> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        if (std::optional<LogLine> line = readLogLine(text.substr(0, end))) {
            line->message = trimmed(line->message);
            lines.push_back(std::move(*line));
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

std::vector<LogLine> lastTroubles(const std::vector<LogLine>& lines) {
    std::vector<LogLine> troubles;
    for (const LogLine& line : lines) {
        if (line.message == runBegin) {
            troubles.clear();
        } else if (line.message == "SimConnect connected") {
            std::erase_if(troubles, isOverOnceConnected);
        } else if (isTrouble(line)) {
            addTrouble(troubles, line);
        }
    }
    troubles.erase(troubles.begin(),
                   troubles.end() - static_cast<std::ptrdiff_t>(std::min(troubles.size(), mostTroubles)));
    return troubles;
}

LogFacts readLogFacts(const Host& host) {
    LogFacts facts;
    std::string latest;
    for (const std::string& folder : logFolders(host)) {
        std::string text;
        FileSystem::readFile(logPath(folder), text);
        const std::vector<LogLine> lines = parseLog(text);
        if (!lines.empty() && lines.back().time > latest) {
            latest = lines.back().time;
            facts = {logPath(folder), lastTroubles(lines)};
        }
    }
    return facts;
}

void judgeLog(const LogFacts& facts, CheckResults& results) {
    const std::size_t before = results.size();
    for (const LogLine& line : facts.troubles) {
        judgeTrouble(line, facts.path, results);
    }
    if (results.size() == before) {
        CheckTopic(results, "Log")
            .good(facts.path.empty() ? "log-none" : "log-clean",
                  facts.path.empty() ? "none yet; the bridge hasn't run here"
                                     : "no error or warning to act on in the last run: " + facts.path);
    }
}
