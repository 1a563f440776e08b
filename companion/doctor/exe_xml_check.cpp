#include "companion/doctor/exe_xml_check.h"

#include "app/program_names.h"
#include "companion/doctor/xml_blocks.h"
#include "platform/file_system.h"
#include "text/ascii.h"

#include <algorithm>
#include <utility>

namespace {

constexpr const char* registerRemedy = "Close the simulator and run \"VantrelBridgeHID --register\".";

Repair registering() {
    return {"register"};
}

/// The value of --config in a command line; quotes around it are optional.
std::string configOption(std::string_view commandLine) {
    constexpr std::string_view option = "--config ";
    const std::size_t begin = commandLine.find(option);
    if (begin == std::string_view::npos) {
        return {};
    }
    const std::string_view value = trimmed(commandLine.substr(begin + option.size()));
    const bool isQuoted = value.starts_with('"');
    return std::string(isQuoted ? value.substr(1, value.find('"', 1) - 1) : value.substr(0, value.find(' ')));
}

std::optional<bool> fileExists(const std::string& path, const SimulatorFolder& simulator) {
    const std::optional<std::string> own = ownPath(path, simulator);
    return own ? std::optional(FileSystem::existsOrFalse(*own)) : std::nullopt;
}

AddonEntry entryOf(const XmlBlock& block, const SimulatorFolder& simulator) {
    AddonEntry entry;
    entry.name = block.member("name");
    entry.path = block.member("path");
    entry.configPath = configOption(block.member("commandline"));
    entry.isDisabled = block.isDisabled();
    entry.isClosed = block.isClosed;
    entry.isInComment = block.isInComment;
    entry.pathExists = fileExists(entry.path, simulator);
    entry.configExists = fileExists(entry.configPath, simulator);
    return entry;
}

bool isBridge(const AddonEntry& entry) {
    return equalsIgnoringCase(entry.name, programName);
}

/// Windows takes paths of different case and separators for the same.
bool isSamePath(const std::string& left, const std::string& right) {
    const std::optional<std::string> resolvedLeft = FileSystem::resolved(left);
    const std::optional<std::string> resolvedRight = FileSystem::resolved(right);
    return resolvedLeft && resolvedRight && equalsIgnoringCase(*resolvedLeft, *resolvedRight);
}

/// Adds the answers about one file under one title.
class ExeXmlJudge {
public:
    ExeXmlJudge(const ExeXmlFacts& facts, const std::string& bridgePath, CheckResults& results)
        : facts(facts), bridgePath(bridgePath), topic(results, facts.simulator + ", EXE.xml") {}

    void judge() {
        if (!facts.exists) {
            judgeUnregistered("exe-xml-absent",
                              "there is no " + facts.path + "; the simulator doesn't start the bridge");
        } else if (!facts.isReadable) {
            topic.fault("exe-xml-unreadable", facts.path + " can't be read",
                        "Check the file's permissions, and whether another program has locked it.");
        } else if (facts.isUtf16) {
            topic.fault("exe-xml-utf16", facts.path + " is in UTF-16, in which the bridge finds nothing",
                        "Save it in an editor with the encoding \"ANSI\", then register the bridge again.");
        } else {
            judgeDocument();
            judgeOwnEntries();
            judgeOtherEntries();
        }
    }

private:
    const ExeXmlFacts& facts;
    const std::string& bridgePath;
    CheckTopic topic;

    void judgeUnregistered(const std::string& code, const std::string& found) {
        if (!facts.isInWine) {
            topic.warning(code, found, registerRemedy, registering());
        }
    }

    void judgeDocument() {
        if (!facts.hasDocumentEnd) {
            topic.fault("exe-xml-malformed", facts.path + " has no </SimBase.Document>",
                        "Add that line at the end, or rename the file and register all add-ons again.");
        }
    }

    void judgeOwnEntries() {
        const auto count = std::ranges::count_if(facts.entries, isBridge);
        if (count == 0) {
            judgeUnregistered("not-registered", facts.path + " has no entry of the bridge");
        } else if (count > 1) {
            topic.warning("registered-twice", facts.path + " has " + std::to_string(count) + " entries of the bridge",
                          "Run \"VantrelBridgeHID --unregister\" until it reports 0 files, then \"--register\".");
        }
        std::ranges::for_each(facts.entries, [this](const AddonEntry& entry) {
            if (isBridge(entry)) {
                judgeOwnEntry(entry);
            }
        });
    }

    void judgeOwnEntry(const AddonEntry& entry) {
        if (entry.isInComment) {
            topic.fault("registered-in-comment", "the bridge's entry is in a comment; the simulator ignores it",
                        "Remove the comment from " + facts.path + ", then register the bridge again.");
        } else if (!entry.isClosed) {
            topic.fault("own-entry-broken", "the bridge's entry has no </Launch.Addon>",
                        "Add that line to " + facts.path + " behind the entry.");
        } else if (entry.isDisabled) {
            topic.fault("registered-disabled", "the bridge's entry is disabled", registerRemedy, registering());
        } else if (!entry.pathExists.value_or(true)) {
            topic.fault("registered-path-missing", "the entry names " + entry.path + ", which doesn't exist",
                        registerRemedy, registering());
        } else if (!entry.configExists.value_or(true)) {
            topic.fault("registered-config-missing",
                        "the entry names the configuration " + entry.configPath + ", which doesn't exist",
                        registerRemedy, registering());
        } else if (entry.pathExists && !isSamePath(entry.path, bridgePath)) {
            topic.warning("registered-elsewhere", "the simulator starts another copy of the bridge: " + entry.path,
                          "If you want the one beside vantrel, run \"VantrelBridgeHID --register\" in its folder.",
                          registering());
        } else {
            topic.good("registered", "the simulator starts " + entry.path);
        }
    }

    void judgeOtherEntries() {
        for (const AddonEntry& entry : facts.entries) {
            if (!isBridge(entry) && !entry.isInComment) {
                judgeOtherEntry(entry);
            }
        }
    }

    void judgeOtherEntry(const AddonEntry& entry) {
        const std::string name = entry.name.empty() ? "a program without a name" : '"' + entry.name + '"';
        if (!entry.isClosed) {
            topic.fault("other-entry-broken", "the entry of " + name + " has no </Launch.Addon>",
                        "Add that line to " + facts.path + " behind the entry: it can hide the bridge's.");
        } else if (entry.path.empty()) {
            topic.warning("other-path-empty", "the entry of " + name + " names no program",
                          "Remove the entry from " + facts.path + ", or install that program again.");
        } else if (!entry.isDisabled && !entry.pathExists.value_or(true)) {
            topic.warning("other-path-missing",
                          "the entry of " + name + " names " + entry.path + ", which doesn't exist",
                          "Remove the entry from " + facts.path + ", or install that program again.");
        }
    }
};

} // namespace

ExeXmlFacts readExeXmlFacts(const SimulatorFolder& simulator) {
    ExeXmlFacts facts;
    facts.simulator = simulator.name;
    facts.isInWine = simulator.isInWine;
    facts.path = pathInAnyCase(simulator.path, "EXE.xml");
    facts.exists = FileSystem::existsOrFalse(facts.path);
    std::string text;
    facts.isReadable = FileSystem::readFile(facts.path, text);
    facts.isUtf16 = isUtf16(text);
    facts.hasDocumentEnd = hasDocumentEnd(text);
    for (const XmlBlock& block : xmlBlocks(text, "Launch.Addon")) {
        facts.entries.push_back(entryOf(block, simulator));
    }
    return facts;
}

void judgeExeXml(const ExeXmlFacts& facts, const std::string& bridgePath, CheckResults& results) {
    ExeXmlJudge(facts, bridgePath, results).judge();
}
