#include "tests/soak/soak_run.h"

#include "tests/support/numbered_controls.h"
#include "tests/support/wait_until.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace {

constexpr std::chrono::seconds patience{30};
/// The flow's controls are 0 and up, the last is the marker's.
constexpr std::uint32_t controls = 2000;
constexpr std::uint32_t markerControl = controls - 1;
/// Presses sent without a look at the reader: half of what a board keeps for a reader that a busy machine delays.
constexpr std::uint32_t burst = 32;
constexpr std::string_view code = "(>K:SOAK)";
constexpr const char* witnessName = "witness";
const std::array<std::string, 3> victims{"victim 0", "victim 1", "victim 2"};
/// Every wait is short, the pause between two polls too.
constexpr Pace hurried{std::chrono::milliseconds(0), std::chrono::milliseconds(5), {}};
/// Lives before the resources are taken as settled.
constexpr int warmUpLives = 3;
/// What the allocator may keep for itself beyond that.
constexpr double memoryMarginMiB = 6;
/// From here on every press becomes a command.
constexpr std::string_view lastHandshakeCommand = "MF.SimVars.Add.(L:LIGHTING_POTENTIOMETER_5)";
/// Between "MF.SimVars.Set." and the command's own text.
constexpr std::string_view commandPrefix = "1 ";
constexpr LedCommand batteryOffLight{2, 0, 5, 1000, 50};
constexpr LedCommand backlight{1, 80, 0, 0, 0};

void require(bool holds, const std::string& what) {
    if (!holds) {
        throw std::runtime_error(what);
    }
}

RigBoard makeBoard(const std::string& name, std::uint8_t number) {
    VirtualBoardModel model;
    model.boardId = HidProtocol::BoardId{0, 0, 0, 0, 0, 0, 0, number};
    return {name, model};
}

RigSettings soakRig() {
    RigSettings settings;
    settings.boards.push_back(makeBoard(witnessName, 100));
    for (const std::string& victim : victims) {
        settings.boards.push_back(makeBoard(victim, static_cast<std::uint8_t>(settings.boards.size() - 1)));
    }
    settings.files = numberedControls(controls, code);
    settings.files["config.json"] =
        R"({"hid":{"vid":"1234","pid":"ABCD","scanIntervalMs":5},"mappings":{"buttonConfigPath":"buttons.json"},)"
        R"("outputs":{"debounceMs":5}})";
    // Boards come and go in the midst of what the bridge does.
    settings.waitsForBridge = false;
    settings.pace = hurried;
    return settings;
}

/// Presses each of the flow's controls once, in turn, on a thread of its own, until it is destroyed.
class PressFlow {
public:
    explicit PressFlow(VirtualBoard& board)
        : thread([this, &board] {
              for (; !ending && sent < markerControl; ++sent) {
                  board.press(static_cast<std::uint16_t>(sent));
                  std::this_thread::sleep_for(std::chrono::milliseconds(1));
              }
          }) {}
    ~PressFlow() {
        ending = true;
        thread.join();
    }
    PressFlow(const PressFlow&) = delete;
    PressFlow& operator=(const PressFlow&) = delete;

    std::atomic<std::uint32_t> sent{0};

private:
    std::atomic<bool> ending{false};
    std::thread thread;
};

} // namespace

std::string describe(const SoakTotals& totals) {
    std::ostringstream text;
    text << totals.lives << " lives, each with " << SoakRun::replugs << " replugs, " << SoakRun::lostSessions
         << " lost sessions, a crash and " << SoakRun::checkedPresses << " checked presses that all arrived; "
         << totals.flowingPresses << " presses amid faults gave " << totals.flowingCommands
         << " commands, none twice or out of order";
    return text.str();
}

SoakRun::SoakRun(std::uint32_t seed)
    : rig(soakRig()), simulator(rig.simulator()), witness(rig.board(witnessName)), random(seed) {
    std::string error;
    require(rig.setUp(error), error);
    threadsBetweenLives = currentResources().threads;
}

void SoakRun::liveOnce() {
    rig.startSimulator();
    rig.plugAll();
    rig.startBridge();
    require(rig.bridge().running(), "the bridge doesn't start");
    waitUntilReady();
    playFaults();
    clearFaults();
    rig.plugAll();
    waitUntilReady();
    checkLights();
    checkPresses();
    crashAndEnd();
    rig.endBridge();
    ++sum.lives;
    checkResources();
}

void SoakRun::waitUntilReady() {
    const bool registered = simulator.waitFor(
        [](const std::vector<SimulatorRecord>& records) {
            bool ready = false;
            for (const SimulatorRecord& record : records) {
                ready = record.kind != SimulatorRecordKind::Opened && (ready || record.text == lastHandshakeCommand);
            }
            return ready;
        },
        patience);
    require(registered, "no session is registered");
    waitForReader();
}

void SoakRun::waitForReader() {
    require(waitUntil([this] { return rig.awaited(witnessName); }, patience), "the witness isn't read");
}

void SoakRun::waitForMarker() {
    witness.press(markerControl);
    const std::string command = std::string(commandPrefix) + std::to_string(markerControl) + " " + std::string(code);
    require(simulator.waitForText(SimulatorRecordKind::Executed, command, 1, patience), "a press is lost");
}

void SoakRun::playFaults() {
    simulator.clearRecords();
    int replugged = 0;
    int lost = 0;
    const PressFlow flow(witness);
    while (replugged < replugs || lost < lostSessions) {
        if (lost < lostSessions && (replugged == replugs || chance(0.3))) {
            loseSession(static_cast<std::size_t>(++lost));
        } else {
            replugOne();
            ++replugged;
        }
        simulator.setBattery(chance(0.5));
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 10));
    }
    checkFlow();
    sum.flowingPresses += flow.sent;
}

void SoakRun::loseSession(std::size_t count) {
    // No client gets an answer that equals the last one, such as a confirmation. In a cockpit with other clients,
    // their answers come between.
    simulator.respond("MF.Pong");
    simulator.dropSessions();
    require(simulator.waitForText(SimulatorRecordKind::Command, lastHandshakeCommand, count, patience),
            "a lost session isn't regained");
}

void SoakRun::replugOne() {
    const std::string& victim = victims[random() % victims.size()];
    setRandomFaults(victim);
    rig.unplug(victim);
    if (chance(0.5)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 10));
    }
    rig.plug(victim);
    rig.board(victim).press(static_cast<std::uint16_t>(controls + 1));
}

void SoakRun::setRandomFaults(const std::string& board) {
    HidLinkFaults faults;
    if (chance(0.3)) {
        faults.writeError = 5;
    }
    for (const HidMode mode : {HidMode::Overlapped, HidMode::Synchronous}) {
        if (chance(0.2)) {
            faults.refusedOpens.push_back({HidAccess::ReadWrite, mode});
        }
    }
    faults.readsFail = chance(0.1);
    faults.serialFails = chance(0.2);
    if (chance(0.2)) {
        faults.failingFeatures.insert(HidProtocol::protocolInfoReportId);
    }
    rig.setFaults(board, faults);
}

void SoakRun::clearFaults() {
    for (const std::string& victim : victims) {
        rig.setFaults(victim, {});
        // A session that was made under a fault keeps it: an output that couldn't be opened stays disabled.
        rig.unplug(victim);
        rig.plug(victim);
    }
    simulator.setBattery(true);
}

std::vector<std::uint32_t> SoakRun::executedNumbers() const {
    std::vector<std::uint32_t> numbers;
    for (const std::string& text : simulator.texts(SimulatorRecordKind::Executed)) {
        numbers.push_back(static_cast<std::uint32_t>(std::stoul(text.substr(commandPrefix.size()))));
    }
    return numbers;
}

void SoakRun::checkFlow() {
    const std::vector<std::uint32_t> numbers = executedNumbers();
    sum.flowingCommands += numbers.size();
    for (std::size_t i = 1; i < numbers.size(); ++i) {
        // Lost presses skip ahead; a doubled or an overtaken command doesn't.
        require(numbers[i] > numbers[i - 1],
                "command " + std::to_string(numbers[i]) + " came behind " + std::to_string(numbers[i - 1]));
    }
}

void SoakRun::checkPresses() {
    waitForMarker();
    simulator.clearRecords();
    for (std::uint32_t number = 0; number < checkedPresses; ++number) {
        if (number % burst == 0) {
            waitForReader();
        }
        witness.press(static_cast<std::uint16_t>(number));
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    require(simulator.waitForKind(SimulatorRecordKind::Executed, checkedPresses, patience), "a press is lost");
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    std::vector<std::uint32_t> expected(checkedPresses);
    std::iota(expected.begin(), expected.end(), 0U);
    require(executedNumbers() == expected, "a press came twice, or presses in another order");
}

void SoakRun::checkLights() {
    simulator.setBattery(false);
    expectLights(batteryOffLight);
    simulator.setBattery(true);
    expectLights(backlight);
}

void SoakRun::expectLights(const LedCommand& expected) {
    for (const RigBoard& made : rig.boards()) {
        VirtualBoard& board = rig.board(made.name);
        require(waitUntil([&] { return board.led() == expected; }, patience), made.name + " shows another light");
        require(board.simConnected() == true, made.name + " doesn't know of the session");
        board.clearOutputs();
    }
}

void SoakRun::crashAndEnd() {
    rig.crashSimulator();
    require(waitUntil([this] { return !rig.bridge().running(); }, patience), "the bridge outlives the simulator");
    for (const std::string& victim : victims) {
        require(rig.board(victim).simConnected() == false, "a board doesn't know of the session's end");
    }
    simulator.clearRecords();
}

void SoakRun::checkResources() {
    require(rig.bus().openHandleCount() == 0, "a board's handle is left open");
    require(rig.bus().misuseCount() == 0, "a handle was used against its contract");
    // A joined thread is counted until the kernel has taken it off its list.
    require(waitUntil([this] { return currentResources().threads == threadsBetweenLives; }, patience),
            "a thread is left over");
    const Resources now = currentResources();
    if (sum.lives <= warmUpLives) {
        settled = now;
        return;
    }
    require(now.fileDescriptors == settled.fileDescriptors, "a file descriptor is left open");
    require(now.residentMiB <= settled.residentMiB + memoryMarginMiB,
            "memory has grown to " + std::to_string(now.residentMiB) + " MiB");
}

bool SoakRun::chance(double probability) {
    return std::uniform_real_distribution<>(0, 1)(random) < probability;
}
