#include "companion/doctor/module_check.h"

#include "companion/doctor/module_files.h"
#include "companion/doctor/system_text.h"
#include "companion/doctor/user_cfg.h"
#include "companion/doctor/xml_blocks.h"
#include "platform/file_system.h"
#include "text/ascii.h"

#include <utility>

namespace {

constexpr const char* moduleName = "mobiflight-event-module";
constexpr const char* oldestVersion = "0.5.0";

/// The packages' folder that UserCfg.opt names, else the one beside it.
std::string packagesFolder(const SimulatorFolder& simulator, ModuleFacts& facts) {
    std::string text;
    facts.userCfgPath = pathInAnyCase(simulator.path, "UserCfg.opt");
    facts.hasUserCfg = FileSystem::readFile(facts.userCfgPath, text);
    facts.isUserCfgUtf16 = isUtf16(text);
    facts.namedPackages = installedPackagesPath(text).value_or("");
    // Programs differ on the encoding of this file.
    for (const std::string& named : {facts.namedPackages, bytesFromUtf8(facts.namedPackages)}) {
        const std::optional<std::string> own = ownPath(named, simulator);
        if (own && FileSystem::existsOrFalse(*own)) {
            return *own;
        }
    }
    const std::string named = ownPath(facts.namedPackages, simulator).value_or(facts.namedPackages);
    return named.empty() ? pathInAnyCase(simulator.path, "Packages") : named;
}

bool isModuleFolder(const std::string& folder) {
    return FileSystem::existsOrFalse(pathInAnyCase(folder, "layout.json")) ||
           FileSystem::existsOrFalse(pathInAnyCase(folder, "manifest.json"));
}

/// The module in a folder of its own or of its archive's name, in which it isn't seen.
std::string nestedModule(const std::string& community) {
    for (const std::string& name : FileSystem::namesIn(community)) {
        std::string inside = pathInAnyCase(FileSystem::join(community, name), moduleName);
        if (lowerCased(name).starts_with("mobiflight") && isModuleFolder(inside)) {
            return inside;
        }
    }
    return {};
}

/// Some versions of 2024 have a Community folder of their own.
std::string communityFolder(const SimulatorFolder& simulator, const std::string& packages) {
    const std::string community = pathInAnyCase(packages, "Community");
    const std::string own = pathInAnyCase(packages, "Community2024");
    const bool isInOwn = simulator.is2024 && FileSystem::existsOrFalse(pathInAnyCase(own, moduleName)) &&
                         !FileSystem::existsOrFalse(pathInAnyCase(community, moduleName));
    return isInOwn ? own : community;
}

std::string textOf(const std::string& folder, const std::string& name) {
    std::string text;
    FileSystem::readFile(pathInAnyCase(folder, name), text);
    return text;
}

void readPackage(ModuleFacts& facts) {
    const auto has = [&facts](const char* name) {
        return FileSystem::existsOrFalse(pathInAnyCase(facts.folder, name));
    };
    facts.hasLayout = has("layout.json");
    facts.hasProgram = has("modules/MobiFlightWasmModule.wasm");
    facts.hasOldProgram = has("modules/StandaloneModule.wasm");
    facts.version = packageVersion(textOf(facts.folder, "manifest.json"));
    const auto files = packageFiles(textOf(facts.folder, "layout.json"));
    facts.isLayoutReadable = files.has_value();
    for (const PackageFile& file : files.value_or(std::vector<PackageFile>())) {
        if (FileSystem::fileSize(pathInAnyCase(facts.folder, file.path)) != file.size) {
            facts.wrongFiles.push_back(file.path);
        }
    }
}

constexpr const char* installRemedy =
    "Install the MobiFlight module again (docs/mobiflight-module.md), then restart the "
    "simulator.";

class ModuleJudge {
public:
    ModuleJudge(const ModuleFacts& facts, CheckResults& results)
        : facts(facts), topic(results, facts.simulator + ", MobiFlight module") {}

    void judge() {
        if (facts.isUserCfgUtf16) {
            topic.warning("user-cfg-utf16", facts.userCfgPath + " is in UTF-16, which this check can't read",
                          "If you moved the simulator's packages, look for the module there yourself.");
        }
        if (!facts.hasUserCfg && !facts.hasCommunity) {
            topic.warning("never-started", "there is no " + facts.userCfgPath,
                          "If this simulator is installed, start it once and choose where it keeps its packages.");
        } else if (!facts.hasCommunity) {
            judgeMissingCommunity();
        } else if (facts.folder.empty()) {
            judgeMissingFolder();
        } else {
            judgePackage();
        }
    }

private:
    const ModuleFacts& facts;
    CheckTopic topic;

    void judgeMissingCommunity() {
        if (facts.namedPackages.empty()) {
            topic.fault("community-missing", "there is no Community folder " + facts.community,
                        "Start the simulator once; it makes the folder.", makingCommunity());
        } else {
            topic.fault("packages-missing",
                        facts.userCfgPath + " names the packages' folder " + facts.namedPackages +
                            ", which doesn't exist or has no folder Community",
                        "Connect the drive, or correct the folder in the simulator's settings.", makingCommunity());
        }
    }

    /// None where the packages' own folder isn't there either, as on a drive that isn't connected.
    Repair makingCommunity() const { return facts.hasPackages ? Repair{"make-folder", facts.community} : Repair(); }

    void judgeMissingFolder() {
        if (facts.nestedFolder.empty()) {
            topic.fault("module-missing", "it isn't in " + facts.community,
                        "Install the MobiFlight module (docs/mobiflight-module.md), then restart the simulator.");
        } else {
            topic.fault("module-nested", "it is one folder too deep: " + facts.nestedFolder,
                        "Move that folder to " + facts.community + ", then restart the simulator.");
        }
    }

    void judgePackage() {
        if (!facts.hasLayout) {
            topic.fault("module-incomplete", facts.folder + " has no layout.json", installRemedy);
        } else if (!facts.isLayoutReadable) {
            topic.fault("module-layout-broken", "its layout.json can't be read", installRemedy);
        } else if (!facts.hasProgram && !facts.hasOldProgram) {
            topic.fault("module-program-missing", facts.folder + " has no .wasm file in its folder modules",
                        installRemedy);
        } else if (facts.hasProgram && facts.hasOldProgram) {
            topic.warning("module-twice", "an old version is mixed with a new one in " + facts.folder,
                          "Delete the folder. " + std::string(installRemedy));
        } else if (!facts.wrongFiles.empty()) {
            topic.fault("module-damaged",
                        facts.wrongFiles.front() + " is missing or has another size than layout.json says",
                        installRemedy);
        } else {
            judgeVersion();
        }
    }

    void judgeVersion() {
        if (!facts.version) {
            topic.warning("module-version-unknown", "its manifest.json can't be read or has no version", installRemedy);
        } else if (isOlder(*facts.version, oldestVersion)) {
            topic.fault("module-old", "version " + *facts.version + " is too old; the bridge needs " + oldestVersion,
                        installRemedy);
        } else {
            topic.good("module-found", "version " + *facts.version + " in " + facts.folder);
        }
    }
};

} // namespace

ModuleFacts readModuleFacts(const SimulatorFolder& simulator) {
    ModuleFacts facts;
    facts.simulator = simulator.name;
    facts.community = communityFolder(simulator, packagesFolder(simulator, facts));
    facts.hasCommunity = FileSystem::existsOrFalse(facts.community);
    facts.hasPackages = FileSystem::existsOrFalse(FileSystem::parentPath(facts.community));
    const std::string folder = pathInAnyCase(facts.community, moduleName);
    facts.nestedFolder = nestedModule(facts.community);
    if (FileSystem::existsOrFalse(folder) && (isModuleFolder(folder) || facts.nestedFolder.empty())) {
        facts.folder = folder;
        readPackage(facts);
    }
    return facts;
}

void judgeModule(const ModuleFacts& facts, CheckResults& results) {
    ModuleJudge(facts, results).judge();
}
