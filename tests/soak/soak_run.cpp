#include "tests/soak/soak_run.h"

#include "tests/support/numbered_controls.h"
#include "tests/support/wait_until.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <thread>

namespace {

constexpr std::chrono::seconds patience{30};
constexpr std::uint32_t controls = 2000;
constexpr const char* witnessName = "witness";
const std::array<std::string, 3> victims{"victim 0", "victim 1", "victim 2"};
/// Every wait is short, the pause between two polls too.
constexpr Pace hurried{std::chrono::milliseconds(0), std::chrono::milliseconds(5), {}};
/// Lives before the resources are taken as settled.
constexpr int warmUpLives = 3;
/// What the allocator may keep for itself beyond that.
constexpr double memoryMarginMiB = 6;
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
    settings.files = numberedControls(controls, "(>K:SOAK)");
    settings.files["config.json"] =
        R"({"hid":{"vid":"1234","pid":"ABCD","scanIntervalMs":5},"mappings":{"buttonConfigPath":"buttons.json"},)"
        R"("outputs":{"debounceMs":5}})";
    // Boards come and go in the midst of what the bridge does.
    settings.waitsForBridge = false;
    settings.pace = hurried;
    return settings;
}

/// Presses the witness's controls in turn on a thread of its own, until it is destroyed.
class PressFlow {
public:
    explicit PressFlow(VirtualBoard& board)
        : thread([this, &board] {
              for (std::uint32_t number = 0; !ending; ++number) {
                  board.press(static_cast<std::uint16_t>(number % controls));
                  ++sent;
                  std::this_thread::sleep_for(std::chrono::milliseconds(1));
              }
          }) {}
    ~PressFlow() {
        ending = true;
        thread.join();
    }
    PressFlow(const PressFlow&) = delete;
    PressFlow& operator=(const PressFlow&) = delete;

    std::atomic<std::uint64_t> sent{0};

private:
    std::atomic<bool> ending{false};
    std::thread thread;
};

} // namespace

SoakRun::SoakRun(std::uint32_t seed)
    : rig(soakRig()), simulator(rig.simulator()), witness(rig.board(witnessName)), random(seed) {
    std::string error;
    require(rig.setUp(error), error);
}

void SoakRun::liveOnce(const SoakPlan& plan) {
    rig.startSimulator();
    rig.plugAll();
    rig.startBridge();
    require(rig.bridge().running(), "the bridge doesn't start");
    waitUntilReady();
    playFaults(plan);
    clearFaults();
    rig.plugAll();
    waitUntilReady();
    checkLights();
    checkPresses(plan.checkedPresses);
    dieAndEnd();
    rig.endBridge();
    ++sum.lives;
    checkResources();
}

void SoakRun::waitUntilReady() {
    // The last command of the handshake: from here on every press becomes a command.
    const bool registered = simulator.waitFor(
        [](const std::vector<SimulatorRecord>& records) {
            const auto isRecord = [](SimulatorRecordKind kind, const char* text) {
                return [kind, text](const SimulatorRecord& record) {
                    return record.kind == kind && (text == nullptr || record.text == text);
                };
            };
            const auto opened =
                std::find_if(records.rbegin(), records.rend(), isRecord(SimulatorRecordKind::Opened, nullptr));
            const auto added =
                std::find_if(records.rbegin(), records.rend(),
                             isRecord(SimulatorRecordKind::Command, "MF.SimVars.Add.(L:LIGHTING_POTENTIOMETER_5)"));
            return opened != records.rend() && added != records.rend() && added < opened;
        },
        patience);
    require(registered, "no session is registered");
    require(waitUntil([this] { return rig.awaited(witnessName); }, patience), "the witness isn't read");
}

void SoakRun::playFaults(const SoakPlan& plan) {
    simulator.clearRecords();
    int replugs = plan.replugs;
    int losses = plan.lostSessions;
    const PressFlow flow(witness);
    while (replugs > 0 || losses > 0) {
        const bool lose = losses > 0 && (replugs == 0 || chance(0.3));
        if (lose) {
            simulator.dropSessions();
            // Nobody hears the very answer that the module gave last, a confirmation neither; in a cockpit with other
            // clients theirs come between.
            simulator.respond("MF.Pong");
            --losses;
            ++sum.lostSessions;
            const auto openedSince = static_cast<std::size_t>(plan.lostSessions - losses);
            require(simulator.waitForText(SimulatorRecordKind::Command, "MF.SimVars.Add.(L:LIGHTING_POTENTIOMETER_5)",
                                          openedSince, patience),
                    "a lost session isn't regained");
        } else {
            replugOne();
            --replugs;
        }
        simulator.setBattery(chance(0.5));
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 10));
    }
    checkFlow();
    sum.flowingPresses += flow.sent;
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
    ++sum.replugs;
}

void SoakRun::setRandomFaults(const std::string& board) {
    HidLinkFaults faults;
    if (chance(0.3)) {
        faults.writeError = 5;
    }
    if (chance(0.2)) {
        faults.refusedOpens.push_back({HidAccess::ReadWrite, HidMode::Overlapped});
    }
    if (chance(0.2)) {
        faults.refusedOpens.push_back({HidAccess::ReadWrite, HidMode::Synchronous});
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
        // Told losses skip ahead, by less than half a round; a step of none or a step back is a doubled or an overtaken
        // command.
        const std::uint32_t step = (numbers[i] + controls - numbers[i - 1]) % controls;
        require(step > 0 && step < controls / 2,
                "command " + std::to_string(numbers[i]) + " came behind " + std::to_string(numbers[i - 1]));
    }
}

void SoakRun::checkPresses(std::uint32_t count) {
    // The flow's last commands are through once two dispatches' time is quiet.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    simulator.clearRecords();
    for (std::uint32_t number = 0; number < count; ++number) {
        witness.press(static_cast<std::uint16_t>(number));
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    require(simulator.waitForKind(SimulatorRecordKind::Executed, count, patience), "a press is lost");
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const std::vector<std::uint32_t> numbers = executedNumbers();
    require(numbers.size() == count, "a press came twice");
    for (std::uint32_t number = 0; number < count; ++number) {
        require(numbers[number] == number, "presses came in another order");
    }
    sum.checkedPresses += count;
}

void SoakRun::checkLights() {
    simulator.setBattery(false);
    expectLights(batteryOffLight);
    simulator.setBattery(true);
    expectLights(backlight);
}

void SoakRun::expectLights(const LedCommand& expected) {
    require(waitUntil([&] { return witness.led() == expected; }, patience), "the witness shows another light");
    for (const std::string& name : victims) {
        VirtualBoard& victim = rig.board(name);
        require(waitUntil([&] { return victim.led() == expected; }, patience), "a board shows another light");
        require(victim.simConnected() == true, "a board doesn't know of the session");
        victim.clearOutputs();
    }
    witness.clearOutputs();
}

void SoakRun::dieAndEnd() {
    rig.crashSimulator();
    ++sum.deaths;
    require(waitUntil([this] { return !rig.bridge().running(); }, patience), "the bridge outlives the simulator");
    for (const std::string& victim : victims) {
        require(rig.board(victim).simConnected() == false, "a board wasn't told of the session's end");
    }
    simulator.clearRecords();
}

void SoakRun::checkResources() {
    require(rig.bus().openHandleCount() == 0, "a board's handle is left open");
    require(rig.bus().misuseCount() == 0, "a handle was used against its contract");
    const Resources now = currentResources();
    if (sum.lives <= warmUpLives) {
        settled = now;
        return;
    }
    require(now.threads == settled.threads, "a thread is left over");
    require(now.fileDescriptors == settled.fileDescriptors, "a file descriptor is left open");
    require(now.residentMiB <= settled.residentMiB + memoryMarginMiB,
            "memory has grown to " + std::to_string(now.residentMiB) + " MiB");
}

bool SoakRun::chance(double probability) {
    return std::uniform_real_distribution<>(0, 1)(random) < probability;
}
