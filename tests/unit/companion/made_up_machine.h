#pragma once

#include "companion/doctor/doctor.h"
#include "platform/file_system.h"
#include "simulation/boards/virtual_hid_bus.h"
#include "tests/support/fake_host.h"
#include "tests/support/temp_folder.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

enum class Installation { Store2020, Steam2020, Store2024, Steam2024 };

/// A PC in a folder of its own, with one simulator, the module, the bridge and a board: all is well at first.
class MadeUpMachine {
public:
    explicit MadeUpMachine(Installation installation) : simulator(folderOf(installation)) {
        host.variables = {{"LOCALAPPDATA", files.path("Local")}, {"APPDATA", files.path("Roaming")}};
        host.executable = files.write("bridge/vantrel.exe", "");
        host.dataFolder = files.makeFolder("Data");
        writeBridge();
        writeSimulator();
        writeModule("Packages/Community/mobiflight-event-module");
        plugBoard({});
    }

    /// A file of the simulator's user.
    std::string put(const std::string& name, const std::string& text) const {
        return files.write(simulator + '/' + name, text);
    }
    std::string path(const std::string& name) const { return files.path(simulator + '/' + name); }
    void drop(const std::string& name) const { std::filesystem::remove_all(FileSystem::fromBytes(path(name))); }

    void putExeXml(const std::string& entries) const {
        put("EXE.xml", "<SimBase.Document Type=\"SimConnect\" version=\"1,0\">\n" + entries + "</SimBase.Document>\n");
    }
    static std::string entry(const std::string& name, const std::string& program, const std::string& rest = "") {
        return "<Launch.Addon>\n<Name>" + name + "</Name>\n<Path>" + program + "</Path>\n" + rest + "</Launch.Addon>\n";
    }
    std::string ownEntry(const std::string& rest = "") const { return entry("VantrelBridgeHID", bridge, rest); }

    void writeModule(const std::string& folder, const std::string& manifest = R"({"package_version": "1.0.1"})") const {
        put(folder + "/manifest.json", manifest);
        put(folder + "/layout.json",
            R"({"content": [{"path": "modules/MobiFlightWasmModule.wasm", "size": 4, "date": 1}]})");
        put(folder + "/modules/MobiFlightWasmModule.wasm", "wasm");
    }

    void putSimConnectXml(const std::string& members) const {
        put("SimConnect.xml",
            "<SimBase.Document>\n<SimConnect.Comm>" + members + "</SimConnect.Comm>\n</SimBase.Document>");
    }

    void putLog(const std::string& lines) const {
        files.write("Data/VantrelBridge/logs/VantrelBridgeHID.log",
                    "2026-01-02 10:00:00 [INFO] Initializing application\n" + lines);
    }

    void plugBoard(const HidLinkFaults& faults, const VirtualBoardModel& model = {}) {
        if (board) {
            bus.unplug(board);
        }
        board = std::make_shared<VirtualBoard>(model);
        bus.setFaults(board, faults);
        bus.plug(board);
    }

    Machine record() {
        Machine machine;
        machine.host = host.record();
        machine.host.systemNotice = [this] { return systemNotice; };
        machine.hid = bus.transport();
        machine.simConnectDllNotice = [this] { return dllNotice; };
        machine.simConnectCfgFolders = {files.path("bridge")};
        machine.downloadMark = [this](const std::string& path) {
            return FileSystem::fileName(path) == markedFile
                       ? std::optional<std::string>("[ZoneTransfer]\r\nZoneId=3\r\n")
                       : std::nullopt;
        };
        machine.canWriteInto = [this](const std::string& folder) { return isLogWritable && canWriteInto(folder); };
        machine.idsOfDevice = [this](const std::string&) { return deviceIds; };
        machine.udevRuleFolders = udevRuleFolders;
        machine.isInGroup = [](const std::string& group) { return group == "mine"; };
        return machine;
    }

    /// What isn't good, by its codes.
    std::vector<std::string> complaints() {
        std::vector<std::string> codes;
        for (const CheckResult& result : examine(record(), files.path("bridge/config/config.json"))) {
            if (result.mark != Mark::Good) {
                codes.push_back(result.code);
                EXPECT_FALSE(result.title.empty() || result.found.empty() || result.remedy.empty()) << result.code;
            }
        }
        return codes;
    }

    TempFolder files;
    FakeHost host;
    VirtualHidBus bus;
    std::shared_ptr<VirtualBoard> board;
    std::string bridge;
    std::string dllNotice;
    std::string markedFile;
    std::string systemNotice;
    bool isLogWritable = true;
    std::optional<UsbIds> deviceIds = UsbIds{0x1234, 0xABCD};
    std::vector<std::string> udevRuleFolders;

private:
    std::string simulator;

    static std::string folderOf(Installation installation) {
        switch (installation) {
        case Installation::Store2020:
            return "Local/Packages/Microsoft.FlightSimulator_8wekyb3d8bbwe/LocalCache";
        case Installation::Store2024:
            return "Local/Packages/Microsoft.Limitless_8wekyb3d8bbwe/LocalCache";
        case Installation::Steam2020:
            return "Roaming/Microsoft Flight Simulator";
        case Installation::Steam2024:
            break;
        }
        return "Roaming/Microsoft Flight Simulator 2024";
    }

    void writeBridge() {
        bridge = files.write("bridge/VantrelBridgeHID.exe", "");
        files.write("bridge/SimConnect.cfg", "[SimConnect]\nProtocol=IPv4\nAddress=127.0.0.1\nPort=5000\n");
        files.write("bridge/config/config.json",
                    R"({"hid": {"vid": "1234", "pid": "ABCD"}, "mappings": {"buttonConfigPath": "buttons.json"}})");
        files.write("bridge/config/hid_event_map.json", R"({"event_types": {"BUTTON": 1}, "control_ids": {"AP": 22}})");
        files.write("bridge/config/buttons.json",
                    R"~({"buttons": [{"name": "AP", "commands": {"PRESS": {"DEFAULT": "(>K:AP_MASTER)"}}}]})~");
    }

    void writeSimulator() const {
        putExeXml(ownEntry());
        put("UserCfg.opt", "Version 66\n{Graphics\n}\nInstalledPackagesPath \"" + path("Packages") + "\"\n");
        putSimConnectXml("<Protocol>IPv4</Protocol><Port>5000</Port><Disabled>False</Disabled>");
    }
};
