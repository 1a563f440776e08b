#include "tests/system/support/bridge_test.h"

#include <algorithm>

namespace {

const char* const eventMap = R"json({"event_types": {"BUTTON": 1}, "control_ids": {"BUTTON": 20}})json";

const char* const buttons =
    R"json({"buttons": [{"name": "BUTTON", "commands": {"PRESS": {"DEFAULT": "(>H:BUTTON_PRESS)"}}}]})json";

/// As much of a log's end as one likes to read.
std::string lastOf(const std::string& log) {
    constexpr std::size_t length = 6000;
    return log.size() <= length ? log : "..." + log.substr(log.size() - length);
}

} // namespace

std::vector<std::uint8_t> reportOf(std::initializer_list<int> bytes) {
    std::vector<std::uint8_t> report;
    for (const int byte : bytes) {
        report.push_back(static_cast<std::uint8_t>(byte));
    }
    report.resize(HidProtocol::reportSize);
    return report;
}

BridgeFiles BridgeTest::files() const {
    const std::string config = R"({
  "hid": {"vid": "0x1234", "pid": "ABCD", "scanIntervalMs": )" +
                               std::to_string(scanIntervalMs) + R"(, "trace": 1},
  "mappings": {"buttonConfigPath": "buttons.json"},
  "extensions": {)" + extensions +
                               R"(},
  "logging": {"debug": 1}
})";
    return {{"config.json", config}, {"buttons.json", buttons}, {"hid_event_map.json", eventMap}};
}

void BridgeTest::TearDown() {
    if (bridge && bridge->process().running()) {
        endBridge();
    }
    BoardPool::giveBack(std::move(boards));
    // A command that the simulator doesn't know would leave a test without its subject.
    for (const SimulatorLine& line : simulator ? simulator->lines() : std::vector<SimulatorLine>()) {
        EXPECT_NE(line.kind, "error") << line.text;
    }
    if (HasFailure() && bridge) {
        ADD_FAILURE() << "the bridge's log:\n" << lastOf(bridge->log());
    }
}

void BridgeTest::endBridge() {
    // Without a simulator it would wait out a pause of seconds.
    const bool endsAtOnce = simulator && scanIntervalMs != endlessPause();
    if (endsAtOnce) {
        bridge->process().writeLine("quit");
    } else {
        bridge->process().sendSignal(SIGKILL);
    }
    EXPECT_EQ(bridge->process().waitForExit(), endsAtOnce ? 0 : 128 + SIGKILL);
}

void BridgeTest::startBridge(const std::vector<std::string>& arguments) {
    if (!installation) {
        installation = std::make_unique<BridgeInstallation>(files(), simulator ? simulator->port() : 1);
    }
    BoardPool::unplugOthers(boards);
    bridge = std::make_unique<BridgeProcess>(*installation, arguments);
}

void BridgeTest::startSession(const std::vector<std::string>& arguments) {
    plugBoard(model());
    startSimulator();
    startBridge(arguments);
    ASSERT_TRUE(bridge->waitForLog("MobiFlight client registered"));
    ASSERT_TRUE(simulator->waitFor(SimulatorRecordKind::Command, "MF.SimVars.Add.(L:LIGHTING_POTENTIOMETER_5)"));
}

UhidBoard& BridgeTest::plugBoard(const VirtualBoardModel& boardModel) {
    UhidBoard& board = *boards.emplace_back(BoardPool::take(boardModel, boards));
    if (TestedSystem::isWindows()) {
        board.setPace([this](const std::function<void()>& send) { sendPaced(send); });
    }
    return board;
}

void BridgeTest::sendPaced(const std::function<void()>& send) const {
    // On Windows the bridge keeps several reads pending, all into one buffer. It takes a report out long before a panel
    // can send the next one, but not before this one can, on an emulated machine.
    const auto events = [this] { return bridge->countInLog("HID event from "); };
    const std::size_t before = events();
    send();
    waitUntil([&] { return events() > before; }, ChildProcess::defaultLimit, BridgeProcess::logPause);
}

VirtualBoardModel BridgeTest::model(std::uint8_t number) {
    VirtualBoardModel result;
    result.boardId = HidProtocol::BoardId{0xE6, 0x61, 0x38, 0xA1, 0xB2, 0xC3, 0xD4, number};
    result.protocolInfo = HidProtocol::ProtocolInfo{1, 3, 0x0A};
    return result;
}

std::string BridgeTest::nameOf(const UhidBoard& board) {
    HidProtocol::DeviceInfo info;
    info.boardId = board.panel.model().boardId.value_or(HidProtocol::BoardId{});
    return HidProtocol::boardIdText(info);
}

bool BridgeTest::waitForConnection(const UhidBoard& board, int index) const {
    return bridge->waitForLog("HID device connected: " + nameOf(board) + " index=" + std::to_string(index) + "\n");
}

bool BridgeTest::waitForDisconnection(const UhidBoard& board) const {
    return bridge->waitForLog("HID device disconnected: " + nameOf(board) + "\n");
}

std::vector<std::vector<std::uint8_t>> BridgeTest::reports(const UhidBoard& board, std::uint8_t reportId) {
    std::vector<std::vector<std::uint8_t>> result;
    for (const BoardOutput& output : board.panel.outputs()) {
        if (!output.bytes.empty() && output.bytes[0] == reportId) {
            result.push_back(output.bytes);
        }
    }
    return result;
}

bool BridgeTest::waitForReport(const UhidBoard& board, const std::vector<std::uint8_t>& report) {
    const auto isLast = [&] {
        const auto all = reports(board, report[0]);
        return !all.empty() && all.back() == report;
    };
    return waitUntil(isLast, ChildProcess::defaultLimit);
}

bool BridgeTest::pressWorks(UhidBoard& board, std::size_t count) const {
    board.panel.press(commandButton);
    return simulator->waitFor(SimulatorRecordKind::Executed, buttonCommand, count);
}
