#include "simulation/simulator/virtual_simulator.h"

#include <gtest/gtest.h>

namespace {

TEST(SimulatorOnAPipe, IsRefusedWhereThereAreNoPipes) {
    VirtualSimulator simulator;
    std::string error;
    EXPECT_FALSE(simulator.startOnPipe("bridge-test", error));
    EXPECT_EQ(error, "Failed to listen on pipe bridge-test: this system has no such pipes");
    EXPECT_EQ(simulator.port(), 0);
}

} // namespace
