#pragma once

#include "simulation/rig/bridge_rig.h"
#include "tests/soak/resources.h"

#include <cstdint>
#include <random>
#include <string>
#include <vector>

/// What has happened so far, over all lives.
struct SoakTotals {
    int lives = 0;
    /// Sent amid the faults, where a press may be lost but nothing may come twice or out of order.
    std::uint64_t flowingPresses = 0;
    std::uint64_t flowingCommands = 0;
};

std::string describe(const SoakTotals& totals);

/// Lives of the bridge, one after the other, on the same boards and simulator. Throws std::runtime_error with the
/// reason at the first failure. Control N (0 to 1999) sends "N (>K:SOAK)".
class SoakRun {
public:
    // In each life, which the simulator's crash ends.
    static constexpr int replugs = 10;
    static constexpr int lostSessions = 3;
    /// Presses that must all arrive, sent in quiet after the faults.
    static constexpr std::uint32_t checkedPresses = 200;

    explicit SoakRun(std::uint32_t seed);

    /// One life: faults while a witness board's presses flow, then quiet, in which everything has to be right.
    void liveOnce();

    const SoakTotals& totals() const { return sum; }

private:
    void waitUntilReady();
    /// Waits until nothing is queued between the witness and its reader.
    void waitForReader();
    /// Presses once more, and waits until this command has come, and with it each press before it.
    void waitForMarker();
    void playFaults();
    void loseSession(std::size_t count);
    void replugOne();
    void setRandomFaults(const std::string& board);
    void clearFaults();
    void checkFlow();
    void checkPresses();
    void checkLights();
    void expectLights(const LedCommand& expected);
    void crashAndEnd();
    void checkResources();
    std::vector<std::uint32_t> executedNumbers() const;
    bool chance(double probability);

    BridgeRig rig;
    VirtualSimulator& simulator;
    /// Never pulled and never faulty, so that what becomes of its presses is known.
    VirtualBoard& witness;
    std::mt19937 random;
    SoakTotals sum;
    std::size_t threadsBetweenLives = 0;
    /// Taken after the first lives, when every pool and buffer has its size.
    Resources settled;
};
