// Each row breaks one thing of a PC on which all is well: the check-up names it and nothing else.

#include "companion/doctor/simconnect_check.h"
#include "tests/unit/companion/made_up_machine.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

struct BrokenMachine {
    std::string code;
    std::function<void(MadeUpMachine&)> breakIt;
};

constexpr std::array installations{Installation::Store2020, Installation::Steam2020, Installation::Store2024,
                                   Installation::Steam2024};

const std::string moduleFolder = "Packages/Community/mobiflight-event-module";
const std::vector<HidOpenKind> everyOpening{{HidAccess::ReadWrite, HidMode::Synchronous},
                                            {HidAccess::ReadOnly, HidMode::Synchronous}};

/// On every kind of simulator.
void expectNamed(const std::vector<BrokenMachine>& rows) {
    for (const BrokenMachine& row : rows) {
        for (const Installation installation : installations) {
            MadeUpMachine machine(installation);
            row.breakIt(machine);
            EXPECT_EQ(machine.complaints(), std::vector{row.code}) << static_cast<int>(installation);
        }
    }
}

SimConnectXmlFacts offering(const std::vector<SimConnectEntry>& entries, bool isInWine = false) {
    SimConnectXmlFacts facts;
    facts.isInWine = isInWine;
    facts.entries = entries;
    return facts;
}

void expectNamedOnce(const std::vector<BrokenMachine>& rows) {
    for (const BrokenMachine& row : rows) {
        MadeUpMachine machine(Installation::Store2024);
        row.breakIt(machine);
        EXPECT_EQ(machine.complaints(), std::vector{row.code});
    }
}

} // namespace

TEST(Doctor, FindsNothingOnAHealthyMachine) {
    for (const Installation installation : installations) {
        EXPECT_EQ(MadeUpMachine(installation).complaints(), std::vector<std::string>());
    }
}

TEST(Doctor, NamesWhatIsWrongWithTheRegistration) {
    using M = MadeUpMachine;
    expectNamed({
        {"exe-xml-absent", [](M& pc) { pc.drop("EXE.xml"); }},
        {"exe-xml-unreadable",
         [](M& pc) {
             pc.drop("EXE.xml");
             pc.put("EXE.xml/a-folder", "");
         }},
        {"exe-xml-utf16", [](M& pc) { pc.put("EXE.xml", "\xFF\xFE<"); }},
        {"exe-xml-malformed", [](M& pc) { pc.put("EXE.xml", "<SimBase.Document>" + pc.ownEntry()); }},
        {"not-registered", [](M& pc) { pc.putExeXml(""); }},
        {"registered-twice", [](M& pc) { pc.putExeXml(pc.ownEntry() + pc.ownEntry()); }},
        {"registered-in-comment", [](M& pc) { pc.putExeXml("<!-- " + pc.ownEntry() + " -->"); }},
        {"registered-disabled", [](M& pc) { pc.putExeXml(pc.ownEntry("<Disabled>True</Disabled>")); }},
        {"own-entry-broken",
         [](M& pc) {
             pc.putExeXml("<Launch.Addon>\n<Name>VantrelBridgeHID</Name>\n<Path>" + pc.bridge + "</Path>\n");
         }},
        {"registered-path-missing",
         [](M& pc) { pc.putExeXml(M::entry("VantrelBridgeHID", pc.files.path("gone/VantrelBridgeHID.exe"))); }},
        {"registered-elsewhere",
         [](M& pc) { pc.putExeXml(M::entry("VantrelBridgeHID", pc.files.write("other/VantrelBridgeHID.exe", ""))); }},
        {"registered-config-missing",
         [](M& pc) {
             const std::string option = "--config \"" + pc.files.path("gone.json") + "\"";
             pc.putExeXml(pc.ownEntry("<CommandLine>" + option + "</CommandLine>"));
         }},
        {"other-path-missing",
         [](M& pc) { pc.putExeXml(pc.ownEntry() + M::entry("Other", pc.files.path("gone.exe"))); }},
        {"other-path-empty", [](M& pc) { pc.putExeXml(pc.ownEntry() + M::entry("Other", "")); }},
        {"other-entry-broken", [](M& pc) { pc.putExeXml("<Launch.Addon>\n<Name>Other</Name>\n" + pc.ownEntry()); }},
    });
}

TEST(Doctor, PassesOverEntriesOfOthersThatAreOff) {
    MadeUpMachine pc(Installation::Store2020);
    const std::string gone = pc.files.path("gone.exe");
    pc.putExeXml("<!-- " + MadeUpMachine::entry("A", gone) + " -->\n" +
                 MadeUpMachine::entry("B", gone, "<Disabled>True</Disabled>\n") + pc.ownEntry());
    EXPECT_EQ(pc.complaints(), std::vector<std::string>());
}

TEST(Doctor, NamesWhatIsWrongWithTheModule) {
    using M = MadeUpMachine;
    expectNamed({
        {"never-started",
         [](M& pc) {
             pc.drop("UserCfg.opt");
             pc.drop("Packages");
         }},
        {"community-missing",
         [](M& pc) {
             pc.put("UserCfg.opt", "Version 66\n");
             pc.drop("Packages");
         }},
        {"packages-missing",
         [](M& pc) { pc.put("UserCfg.opt", "InstalledPackagesPath \"" + pc.path("Elsewhere") + "\"\n"); }},
        {"module-missing", [](M& pc) { pc.drop(moduleFolder); }},
        {"module-nested",
         [](M& pc) {
             pc.drop(moduleFolder);
             pc.writeModule("Packages/Community/mobiflight-event-module.1.0.1/mobiflight-event-module");
         }},
        {"module-nested",
         [](M& pc) {
             pc.drop(moduleFolder);
             pc.writeModule(moduleFolder + "/mobiflight-event-module");
         }},
        {"module-incomplete", [](M& pc) { pc.drop(moduleFolder + "/layout.json"); }},
        {"module-layout-broken", [](M& pc) { pc.put(moduleFolder + "/layout.json", "{"); }},
        {"module-program-missing", [](M& pc) { pc.drop(moduleFolder + "/modules"); }},
        {"module-twice", [](M& pc) { pc.put(moduleFolder + "/modules/StandaloneModule.wasm", ""); }},
        {"module-damaged", [](M& pc) { pc.put(moduleFolder + "/modules/MobiFlightWasmModule.wasm", "was"); }},
        {"module-version-unknown", [](M& pc) { pc.put(moduleFolder + "/manifest.json", "{}"); }},
        {"module-old", [](M& pc) { pc.put(moduleFolder + "/manifest.json", R"({"package_version": "0.4.9"})"); }},
    });
}

TEST(Doctor, FollowsTheUserCfgToMovedPackages) {
    MadeUpMachine pc(Installation::Steam2024);
    pc.drop("Packages");
    pc.writeModule("../../Moved/Community/mobiflight-event-module");
    EXPECT_EQ(pc.complaints(), std::vector<std::string>{"packages-missing"});
    pc.put("UserCfg.opt", "InstalledPackagesPath \"" + pc.files.path("Moved") + "\"\r\n");
    EXPECT_EQ(pc.complaints(), std::vector<std::string>());
}

TEST(Doctor, KnowsTheCommunityFolderOf2024) {
    MadeUpMachine pc(Installation::Steam2024);
    pc.drop("Packages/Community");
    pc.put("Packages/Community/other/manifest.json", "{}");
    pc.writeModule("Packages/Community2024/mobiflight-event-module");
    EXPECT_EQ(pc.complaints(), std::vector<std::string>());
}

TEST(Doctor, NamesWhatIsWrongWithTheWayToTheSimulator) {
    using M = MadeUpMachine;
    expectNamed({
        {"simconnect-xml-malformed", [](M& pc) { pc.put("SimConnect.xml", "<SimBase.Document><SimConnect.Comm>"); }},
        {"simconnect-xml-disabled", [](M& pc) { pc.putSimConnectXml("<Disabled>True</Disabled>"); }},
        {"simconnect-port-differs", [](M& pc) { pc.putSimConnectXml("<Protocol>IPv4</Protocol><Port>5001</Port>"); }},
        {"simconnect-port-differs",
         [](M& pc) {
             pc.putSimConnectXml("<Protocol>IPv4</Protocol><Port>5000</Port><Disabled>True</Disabled></SimConnect.Comm>"
                                 "<SimConnect.Comm><Protocol>IPv4</Protocol><Port>5001</Port>");
         }},
        {"simconnect-cfg-no-section", [](M& pc) { pc.files.write("bridge/SimConnect.cfg", "Port=5000\n"); }},
        {"simconnect-cfg-unusable",
         [](M& pc) { pc.files.write("bridge/SimConnect.cfg", "[SimConnect]\nProtocol=IPv5\nPort=5000\n"); }},
    });
    expectNamedOnce({{"simconnect-dll-unusable", [](M& pc) {
                          pc.dllNotice = "C:\\SimConnect.dll can't be used: it failed to start (error 1114); using the "
                                         "built-in SimConnect client";
                      }}});
}

TEST(Doctor, KnowsTheSimConnectCfgIfOnePortLeadsToAllSimulators) {
    const SimConnectEntry ipv4{"IPv4", "5001", false};
    const std::vector<std::pair<std::vector<SimConnectXmlFacts>, std::string>> cases{
        {{}, ""},
        {{offering({})}, ""},
        {{offering({ipv4})}, "5001"},
        {{offering({{"IPv4", "500", true}, {"Pipe", "500", false}, {"IPv6", "501", false}, ipv4})}, "5001"},
        {{offering({{"IPv4", "", false}, {"IPv4", "70000", false}, {"IPv4", "0", false}, {"IPv4", "5x", false}})}, ""},
        {{offering({ipv4}), offering({}), offering({ipv4})}, "5001"},
        {{offering({ipv4}), offering({{"ipv4", "5002", false}})}, ""},
        {{offering({{"IPv4", "500", false}})}, "500"},
        {{offering({{"IPv4", "500", false}}, true)}, ""},
    };
    for (const auto& [simulators, port] : cases) {
        const std::string text =
            port.empty() ? "" : "[SimConnect]\nProtocol=IPv4\nAddress=127.0.0.1\nPort=" + port + "\n";
        EXPECT_EQ(simConnectCfgText(simulators), text);
    }
}

TEST(Doctor, OffersASimConnectCfgWhereTheUserMayWrite) {
    MadeUpMachine pc(Installation::Steam2020);
    Machine machine = pc.record();
    machine.simConnectCfgFolders = {"programs", "home"};
    for (const std::string mayWriteInto : {"programs", "home", "nowhere"}) {
        machine.canWriteInto = [&mayWriteInto](const std::string& folder) { return folder == mayWriteInto; };
        const SimConnectCfgFacts facts = readSimConnectCfgFacts(machine, {offering({{"IPv4", "5001", false}})});
        EXPECT_EQ(facts.writing.path,
                  mayWriteInto == "nowhere" ? "" : FileSystem::join(mayWriteInto, "SimConnect.cfg"));
    }
}

TEST(Doctor, NamesWhatIsWrongWithTheBridge) {
    using M = MadeUpMachine;
    expectNamedOnce({
        {"bridge-not-running",
         [](M& pc) {
             pc.host.setProcesses({"explorer.exe", "FlightSimulator2024.exe"});
         }},
        {"config-missing", [](M& pc) { FileSystem::remove(pc.files.path("bridge/config/config.json")); }},
        {"config-refused", [](M& pc) { pc.files.write("bridge/config/buttons.json", "{"); }},
        {"config-findings", [](M& pc) { pc.files.write("bridge/config/hid_event_map.json", R"({"event_type": {}})"); }},
        {"system-too-old", [](M& pc) { pc.systemNotice = "too old"; }},
        {"download-mark", [](M& pc) { pc.markedFile = "VantrelBridgeHID.exe"; }},
        {"log-folder-unwritable", [](M& pc) { pc.isLogWritable = false; }},
        {"log-error", [](M& pc) { pc.putLog("2026-01-02 10:00:01 [ERROR] Config root must be an object\n"); }},
        {"log-warning",
         [](M& pc) { pc.putLog("2026-01-02 10:00:01 [WARN] No HID device accepted BOOTSEL command of a kind\n"); }},
    });
}

TEST(Doctor, NamesWhatIsWrongWithTheBoards) {
    using M = MadeUpMachine;
    const auto closed = [](const std::string& ruleName, const std::string& rule) {
        return [ruleName, rule](M& pc) {
            pc.plugBoard({.refusedOpens = everyOpening});
            pc.udevRuleFolders = {pc.files.makeFolder("rules")};
            pc.files.write("rules/" + ruleName, rule);
        };
    };
    const std::string rule =
        "KERNEL==\"hidraw*\", ATTRS{idVendor}==\"1234\", ATTRS{idProduct}==\"abcd\", TAG+=\"uaccess\"";
    const std::string group = "KERNEL==\"hidraw*\", ATTRS{idVendor}==\"1234\", ATTRS{idProduct}==\"abcd\", GROUP=";
    expectNamedOnce({
        {"board-missing", [](M& pc) { pc.bus.unplug(pc.board); }},
        {"board-closed", [](M& pc) { pc.plugBoard({.refusedOpens = everyOpening}); }},
        {"board-read-only", [](M& pc) { pc.plugBoard({.refusedOpens = {everyOpening.front()}}); }},
        {"board-without-identity", [](M& pc) { pc.plugBoard({.failingFeatures = {0x20}}); }},
        {"board-no-rule", closed("50-other.rules", "KERNEL==\"hidraw*\", ATTRS{idVendor}==\"5678\"")},
        {"board-no-rule", closed("50-other.txt", rule)},
        {"board-no-rule", closed("70-board.rules", " # " + rule)},
        {"board-group-missing", closed("70-board.rules", group + "\"theirs\"")},
        {"board-rule-without-effect", closed("70-board.rules", group + "\"mine\"")},
        {"board-missing",
         [](M& pc) {
             pc.plugBoard({.refusedOpens = everyOpening});
             pc.deviceIds.reset();
         }},
        {"board-rule-wrong", closed("99-board.rules", rule)},
        {"board-rule-wrong", closed("70-board.rules", "hidraw 1234, TAG+=\"uaccess\"")},
        {"board-rule-wrong", closed("70-board.rules", "hidraw KERNELS==\"0003:1234:abcd.*\", TAG+=\"uaccess\"")},
        {"board-rule-without-effect",
         closed("70-board.rules", "hidraw KERNELS==\"0003:1234:ABCD.*\", TAG+=\"uaccess\"")},
        {"board-rule-without-effect", closed("70-board.rules", rule)},
    });
}

TEST(Doctor, KnowsTheBridgesProcessOnBothSystems) {
    MadeUpMachine pc(Installation::Store2020);
    for (const char* name : {"vantrelbridgehid.EXE", "VantrelBridgeHID"}) {
        pc.host.setProcesses({name, "FlightSimulator.exe"});
        EXPECT_EQ(pc.complaints(), std::vector<std::string>());
    }
}

TEST(Doctor, ReadsTheLogWithTheLatestLine) {
    MadeUpMachine pc(Installation::Store2020);
    pc.putLog("2026-01-02 10:00:01 [ERROR] Config root must be an object\n");
    pc.files.write("bridge/VantrelBridgeHID.log", "2026-01-01 10:00:01 [INFO] older\n");
    EXPECT_EQ(pc.complaints(), std::vector<std::string>{"log-error"});
    pc.files.write("bridge/VantrelBridgeHID.log", "2026-01-03 10:00:01 [INFO] newer\n");
    EXPECT_EQ(pc.complaints(), std::vector<std::string>());
}

TEST(Doctor, ReadsOfTwoUdevRulesOfOneNameTheFirst) {
    MadeUpMachine pc(Installation::Store2020);
    pc.plugBoard({.refusedOpens = everyOpening});
    pc.files.write("etc/70-board.rules", "");
    pc.files.write("lib/70-board.rules", "hidraw 1234 ABCD");
    pc.udevRuleFolders = {pc.files.path("etc"), pc.files.path("lib")};
    EXPECT_EQ(pc.complaints(), std::vector<std::string>{"board-no-rule"});
    pc.udevRuleFolders = {pc.files.path("lib"), pc.files.path("etc")};
    EXPECT_EQ(pc.complaints(), std::vector<std::string>{"board-rule-without-effect"});
}

TEST(Doctor, PrefersTheUdevRuleThatShouldWork) {
    MadeUpMachine pc(Installation::Store2020);
    pc.plugBoard({.refusedOpens = everyOpening});
    pc.files.write("etc/99-board.rules", "hidraw 1234 ABCD uaccess");
    pc.files.write("lib/70-board.rules", "hidraw 1234 ABCD uaccess");
    pc.udevRuleFolders = {pc.files.path("etc"), pc.files.path("lib")};
    EXPECT_EQ(pc.complaints(), std::vector<std::string>{"board-rule-without-effect"});
}

TEST(Doctor, MissesTheSimulator) {
    MadeUpMachine pc(Installation::Steam2020);
    pc.host.variables.clear();
    EXPECT_EQ(pc.complaints(), std::vector<std::string>{"simulator-missing"});
}

TEST(Doctor, LeavesOutWhatTheSystemDoesNotHave) {
    MadeUpMachine pc(Installation::Steam2020);
    Machine machine = pc.record();
    machine.simConnectDllNotice = nullptr;
    machine.downloadMark = nullptr;
    for (const CheckResult& result : examine(machine, pc.files.path("bridge/config/config.json"))) {
        EXPECT_FALSE(result.code.starts_with("simconnect-dll") || result.code == "download-mark") << result.code;
    }
}
