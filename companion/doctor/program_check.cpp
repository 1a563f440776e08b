#include "companion/doctor/program_check.h"

#include "app/app_paths.h"
#include "companion/check/configuration_check.h"
#include "companion/doctor/bridge_program.h"
#include "platform/file_system.h"
#include "text/ascii.h"
#include "text/wording.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <sstream>

namespace {

void judgeBridge(const std::string& path, bool exists, CheckResults& results) {
    CheckTopic topic(results, "Bridge");
    if (exists) {
        topic.good("bridge-found", path);
    } else {
        topic.fault("bridge-missing", "there is no " + path,
                    "Put vantrel into the bridge's folder, or the bridge into vantrel's.");
    }
}

void judgeMissingConfiguration(const Machine& machine, const std::string& path, CheckTopic& topic) {
    std::string places = path;
    for (const std::string& candidate : configCandidates(machine.host)) {
        places += candidate == path ? "" : ", nor " + candidate;
    }
    topic.fault(
        "config-missing", "there is no " + places,
        "Run \"vantrel setup\", which makes one, or copy the sample set's folder \"config\" beside the bridge.");
}

std::string findingCount(const Findings& findings, Severity severity) {
    const auto count = std::ranges::count(findings, severity, &Finding::severity);
    return countText(static_cast<std::size_t>(count), severityName(severity));
}

void judgeConfiguration(const ConfigurationVerdict& verdict, const std::string& path, CheckTopic& topic) {
    const std::string counts =
        findingCount(verdict.findings, Severity::Error) + " and " + findingCount(verdict.findings, Severity::Warning);
    const std::string remedy = "\"vantrel check\" shows each with its line.";
    if (!verdict.bridgeStarts) {
        topic.fault("config-refused", path + ": the bridge doesn't start with it: " + verdict.refusal, remedy);
    } else if (std::ranges::any_of(verdict.findings,
                                   [](const Finding& finding) { return finding.severity != Severity::Hint; })) {
        topic.warning("config-findings", path + " and its files: " + counts, remedy);
    } else {
        topic.good("config-good", path);
    }
}

void checkDownloadMark(const Machine& machine, const std::string& path, CheckResults& results) {
    const std::optional<std::string> mark = machine.downloadMark(path);
    if (mark && marksDownload(*mark)) {
        CheckTopic(results, "Download mark")
            .warning("download-mark", "Windows has marked " + path + " as downloaded and may refuse to start it",
                     "Open the file's properties in Explorer and tick \"Unblock\".");
    }
}

} // namespace

bool marksDownload(const std::string& zoneIdentifier) {
    constexpr std::string_view key = "zoneid";
    constexpr char firstForeignZone = '3';
    std::istringstream lines(zoneIdentifier);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t equals = std::min(line.find('='), line.size());
        const std::string_view value = trimmed(std::string_view(line).substr(std::min(equals + 1, line.size())));
        if (lowerCased(trimmed(std::string_view(line).substr(0, equals))) == key) {
            return value.size() == 1 && value.front() >= firstForeignZone;
        }
    }
    return false;
}

void checkSystem(const Host& host, CheckResults& results) {
    if (const std::string notice = host.systemNotice ? host.systemNotice() : ""; !notice.empty()) {
        CheckTopic(results, "System")
            .warning("system-too-old", notice, "Both simulators and the bridge need a newer version.");
    }
}

void checkProgram(const Machine& machine, const std::string& configPath, CheckResults& results) {
    const std::string bridge = bridgePath(machine.host);
    judgeBridge(bridge, FileSystem::existsOrFalse(bridge), results);
    CheckTopic topic(results, "Configuration");
    if (FileSystem::existsOrFalse(configPath)) {
        judgeConfiguration(checkConfiguration(configPath), configPath, topic);
    } else {
        judgeMissingConfiguration(machine, configPath, topic);
    }
    if (machine.downloadMark) {
        const std::string dll = FileSystem::join(exeDirectory(machine.host), "SimConnect.dll");
        for (const std::string& path : {bridge, machine.host.executablePath(), dll}) {
            checkDownloadMark(machine, path, results);
        }
    }
}
