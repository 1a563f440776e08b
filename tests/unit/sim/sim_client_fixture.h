#pragma once

#include "tests/support/fake_host.h"
#include "tests/support/fake_simconnect.h"
#include "tests/support/log_capture.h"
#include "tests/support/sim_client_access.h"

#include <gtest/gtest.h>

/// A client whose worker goes from sleep to sleep at the test's word, between a simulator and a host in memory.
class SimClientFixture : public testing::Test {
protected:
    using Lines = std::vector<std::string>;

    SimClientFixture() { host.holdSleeps(); }
    ~SimClientFixture() override { stop(); }

    bool start() {
        return client.start(
            "bridge", [this](bool connected) { noteConnection(connected); }, [this] { return boardReady(); }, error);
    }

    /// Starts with a board and the simulator there, and waits for the first poll's sleep.
    void connect() {
        host.setProcesses({"FlightSimulator.exe"});
        ASSERT_TRUE(start());
        ASSERT_EQ(host.waitForSleep(), 15);
        ASSERT_TRUE(client.isConnected());
    }

    /// Lets the worker poll the open session once more.
    void poll() { ASSERT_EQ(host.nextSleep(), 15); }

    void stop() {
        host.letSleepsPass();
        client.stop();
    }

    std::vector<bool> connections() {
        const std::lock_guard lock(mutex);
        return connectionRecord;
    }

    void noteConnection(bool connected) {
        const std::lock_guard lock(mutex);
        connectionRecord.push_back(connected);
        lastConnectionThread = std::this_thread::get_id();
    }

    bool boardReady() {
        ++boardQuestions;
        return board;
    }

    LogCapture log;
    FakeHost host;
    FakeSimConnect sim;
    std::mutex mutex;
    std::vector<bool> connectionRecord;
    std::thread::id lastConnectionThread;
    std::atomic<bool> board{true};
    std::atomic<int> boardQuestions{0};
    std::string error;
    SimConnectClient client{sim.library(), host.record()};
};
