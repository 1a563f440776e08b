#include "tests/system/support/bridge_test.h"

#include <algorithm>
#include <csignal>

namespace {

constexpr std::uint16_t drainControl = 99;
const std::string drainCommand = "(>H:DRAIN)";

const std::string eventMap = R"json({
  "event_types": {"BUTTON": 1, "ENCODER": 2, "NOTICE": 4},
  "control_ids": {
    "HDG_HOLD": 7, "BUTTON": 20, "KNOB": 21, "ROLE_BUTTON": 23, "MAP_LEFT": 30, "DRAIN": 99
  }
})json";

const std::string buttons = R"json({
  "buttons": [
    {"name": "BUTTON", "commands": {
      "PRESS": {"DEFAULT": "(>H:BUTTON_PRESS)"},
      "RELEASE": {"DEFAULT": "(>H:BUTTON_RELEASE)"}}},
    {"name": "ROLE_BUTTON", "commands": {"PRESS": {"PFD": "(>H:PFD_ROLE)", "MFD": "(>H:MFD_ROLE)"}}},
    {"name": "MAP_LEFT", "commands": {"PRESS": {"DEFAULT": "(>H:MAP_PRESS)"}, "HOLD": {"DEFAULT": "(>H:MAP_HOLD)"}}},
    {"name": "DRAIN", "commands": {"PRESS": {"DEFAULT": "(>H:DRAIN)"}}}
  ],
  "knobs": [
    {"name": "KNOB", "commands": {"CW": {"DEFAULT": "(>H:KNOB_CW)"}}}
  ]
})json";

/// The last lines of a log, as many as one likes to read.
std::string lastOf(const std::string& log) {
    constexpr std::size_t length = 6000;
    return log.size() <= length ? log : "..." + log.substr(log.size() - length);
}

} // namespace

BridgeFiles TestConfiguration::files() const {
    const std::string config = R"({
  "hid": {"vid": "0x1234", "pid": "ABCD", "scanIntervalMs": )" +
                               std::to_string(scanIntervalMs) + R"(, "trace": 1},
  "mappings": {"buttonConfigPath": "buttons.json"},
  "extensions": {)" + extensions +
                               R"(},
  "logging": {"debug": 1}
})";
    return {config, buttons, eventMap};
}

std::vector<std::uint8_t> reportOf(std::initializer_list<int> bytes) {
    std::vector<std::uint8_t> report;
    for (const int byte : bytes) {
        report.push_back(static_cast<std::uint8_t>(byte));
    }
    report.resize(HidProtocol::reportSize);
    return report;
}

void BridgeTest::TearDown() {
    if (bridge && consoleRun && bridge->process().running()) {
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
    if (configuration.scanIntervalMs == pauseWithoutEnd()) {
        killBridge();
        return;
    }
    bridge->process().writeLine("quit");
    EXPECT_EQ(bridge->process().waitForExit(), 0);
}

void BridgeTest::killBridge() {
    bridge->process().sendSignal(SIGKILL);
    EXPECT_EQ(bridge->process().waitForExit(), 128 + SIGKILL);
}

SimulatorProcess& BridgeTest::startSimulator(const std::vector<std::string>& options) {
    simulator = std::make_unique<SimulatorProcess>(options);
    return *simulator;
}

BridgeProcess& BridgeTest::startBridge(const std::vector<std::string>& arguments) {
    if (!installation) {
        installation = std::make_unique<BridgeInstallation>(configuration.files(), simulator ? simulator->port() : 1);
    }
    BoardPool::unplugOthers(boards);
    consoleRun = std::find(arguments.begin(), arguments.end(), "--console") != arguments.end();
    bridge = std::make_unique<BridgeProcess>(*installation, arguments);
    return *bridge;
}

void BridgeTest::startSession() {
    plugBoard(model());
    startSimulator();
    startBridge();
    ASSERT_TRUE(bridge->waitForLog("MobiFlight client registered"));
    ASSERT_TRUE(simulator->waitFor(SimulatorRecordKind::Command, "MF.SimVars.Add.(L:LIGHTING_POTENTIOMETER_5)"));
}

UhidBoard& BridgeTest::plugBoard(const VirtualBoardModel& boardModel) {
    UhidBoard& board = *boards.emplace_back(BoardPool::take(boardModel, boards));
    board.setPace([this](const std::function<void()>& send) { sendPaced(send); });
    return board;
}

void BridgeTest::sendPaced(const std::function<void()>& send) {
    // On Windows the bridge keeps several reads pending, all into one buffer. It takes a report out long before a panel
    // can send the next one, but not before this one can, on an emulated machine. Not each report makes an event.
    constexpr std::chrono::milliseconds dealtWith{3000};
    const auto events = [this] { return bridge ? bridge->countInLog("HID event from ") : 0; };
    const std::size_t before = TestedSystem::isWindows() ? events() : 0;
    send();
    if (TestedSystem::isWindows() && bridge) {
        waitUntil([&] { return events() > before; }, dealtWith, BridgeProcess::logPause);
    }
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
    return waitUntil(
        [&] {
            const auto all = reports(board, report[0]);
            return std::find(all.begin(), all.end(), report) != all.end();
        },
        ChildProcess::defaultLimit);
}

bool BridgeTest::waitForLastReport(const UhidBoard& board, const std::vector<std::uint8_t>& report) {
    return waitUntil(
        [&] {
            const auto all = reports(board, report[0]);
            return !all.empty() && all.back() == report;
        },
        ChildProcess::defaultLimit);
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

bool BridgeTest::waitForRpn(const std::string& rpn, std::size_t count) {
    return simulator->waitFor(SimulatorRecordKind::Executed, "1 " + rpn, count);
}

std::vector<std::string> BridgeTest::commandsUntilNow(UhidBoard& board) {
    // The bridge deals with events in their order, so this one's command comes behind those of all before it.
    board.panel.press(drainControl);
    EXPECT_TRUE(waitForRpn(drainCommand, ++drains));
    std::vector<std::string> commands = simulator->texts(SimulatorRecordKind::Executed);
    std::erase(commands, "1 " + drainCommand);
    return commands;
}
