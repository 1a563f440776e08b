#pragma once

#include "simulation/rig/bridge_rig.h"
#include "tests/soak/resources.h"

#include <cstdint>
#include <random>
#include <string>
#include <vector>

/// What goes wrong in one life of the bridge, which the simulator's death ends.
struct SoakPlan {
    int replugs = 10;
    int lostSessions = 3;
    /// Presses that must all arrive, sent in quiet after the faults.
    std::uint32_t checkedPresses = 200;
};

/// What has happened so far, over all lives.
struct SoakTotals {
    int lives = 0;
    int replugs = 0;
    int lostSessions = 0;
    int deaths = 0;
    std::uint64_t checkedPresses = 0;
    /// Sent amid the faults, where told losses are allowed but nothing may come twice or out of order.
    std::uint64_t flowingPresses = 0;
    std::uint64_t flowingCommands = 0;
};

/// Lives of the bridge, one after the other, on the same boards and simulator. Throws std::runtime_error, which says
/// what was wrong, at the first thing that isn't as it has to be. Control N (0 to 1999) sends "N (>K:SOAK)".
class SoakRun {
public:
    explicit SoakRun(std::uint32_t seed);

    /// One life: faults while a witness board's presses flow, then quiet, in which everything has to be right.
    void liveOnce(const SoakPlan& plan);

    const SoakTotals& totals() const { return sum; }

private:
    void waitUntilReady();
    void playFaults(const SoakPlan& plan);
    void replugOne();
    void setRandomFaults(const std::string& board);
    void clearFaults();
    void checkFlow();
    void checkPresses(std::uint32_t count);
    void checkLights();
    void expectLights(const LedCommand& expected);
    void dieAndEnd();
    void checkResources();
    std::vector<std::uint32_t> executedNumbers() const;
    bool chance(double probability);

    BridgeRig rig;
    VirtualSimulator& simulator;
    /// Never pulled and never faulty, so that what becomes of its presses is known.
    VirtualBoard& witness;
    std::mt19937 random;
    SoakTotals sum;
    /// Taken after the first lives, when every pool and buffer has its size.
    Resources settled;
};
