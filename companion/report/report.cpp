#include "companion/report/report.h"

#include "app/program_names.h"
#include "companion/check/configuration_check.h"
#include "companion/doctor/board_check.h"
#include "companion/doctor/check_result_text.h"
#include "companion/doctor/doctor.h"
#include "companion/doctor/log_check.h"
#include "companion/report/companion_name.h"
#include "companion/report/system_identity.h"
#include "platform/file_system.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace {

/// Of each file. The latest lines say most.
constexpr std::size_t largestPart = std::size_t{2} * 1024 * 1024;
/// As many as the bridge keeps.
constexpr int oldLogs = 5;

/// The end of a long text, from the beginning of a line.
std::string endOf(const std::string& text) {
    if (text.size() <= largestPart) {
        return text;
    }
    const std::size_t lineEnd = text.find('\n', text.size() - largestPart);
    return "(the beginning is left out)\n" + text.substr(std::min(lineEnd, text.size() - 1) + 1);
}

class Collector {
public:
    Collector(Report& report, const Anonymizer& anonymizer) : report(report), anonymizer(anonymizer) {}

    void add(const std::string& name, const std::string& text) {
        report.files.push_back({name, anonymizer.anonymized(text)});
    }

    /// Nothing if there is no such file.
    void addFile(const std::string& folder, const std::string& path) {
        std::string text;
        if (FileSystem::readFile(path, text)) {
            add(freeName(folder + '/' + entryName(path)), endOf(text));
        }
    }

private:
    Report& report;
    const Anonymizer& anonymizer;

    /// Without the brackets of the replacements, which no file's name may have on Windows.
    std::string entryName(const std::string& path) const {
        // With a slash in front: only as a part of a path is a user's name replaced.
        std::string name = anonymizer.anonymized('/' + FileSystem::fileName(path)).substr(1);
        std::erase_if(name, [](char byte) { return byte == '<' || byte == '>'; });
        return name;
    }

    /// Files of one name may come from several folders.
    std::string freeName(std::string name) const {
        while (std::ranges::find(report.files, name, &ZipEntry::name) != report.files.end()) {
            name += "-2";
        }
        return name;
    }
};

void addLogs(const Machine& machine, Collector& collector) {
    const std::vector<std::string> folders = logFolders(machine.host);
    for (const std::string& folder : folders) {
        const std::string name = folder == folders.front() ? "logs" : "logs-with-console";
        collector.addFile(name, logPath(folder));
        for (int number = 1; number <= oldLogs; ++number) {
            collector.addFile(name, logPath(folder) + '.' + std::to_string(number));
        }
        for (const char* const program : {programName, companionName}) {
            collector.addFile(name, FileSystem::join(folder, crashFileName(program)));
        }
    }
}

std::vector<std::string> namesOfBoards(const Machine& machine, const std::string& configPath) {
    std::vector<std::string> names;
    for (const ListedBoard& board : readBoardFacts(machine, configPath).boards) {
        for (const std::string& name : {board.boardId, board.serial}) {
            if (!name.empty()) {
                names.push_back(name);
            }
        }
    }
    return names;
}

/// "12 KiB", rounded up.
std::string sizeText(std::size_t bytes) {
    constexpr std::size_t kibibyte = 1024;
    return std::to_string((bytes + kibibyte - 1) / kibibyte) + " KiB";
}

} // namespace

Report collectReport(const Machine& machine, const std::string& configPath, const Anonymizer& anonymizer,
                     const std::string& version) {
    Report report;
    Collector collector(report, anonymizer);
    collector.add("doctor.txt", checkResultsText(examine(machine, configPath), {}));
    collector.add("versions.txt", "vantrel " + version + '\n' + systemVersion() + '\n');
    if (FileSystem::existsOrFalse(configPath)) {
        for (const std::string& path : checkConfiguration(configPath).files) {
            collector.addFile("config", path);
        }
    }
    addLogs(machine, collector);
    report.boardNames = namesOfBoards(machine, configPath);
    return report;
}

std::string reportListing(const Report& report) {
    std::string text = "The report holds:\n";
    for (const ZipEntry& file : report.files) {
        text += "  " + file.name + ", " + sizeText(file.content.size()) + '\n';
    }
    text += "Home folder, user names in paths and the computer's name are replaced. Serial numbers and identities of\n"
            "boards are kept";
    for (const std::string& name : report.boardNames) {
        text += (name == report.boardNames.front() ? ": " : ", ") + name;
    }
    return text + ".\n";
}
