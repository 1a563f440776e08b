#pragma once

#include "logging/logger.h"
#include "sim/sim_client_session.h"
#include "tests/support/fake_simconnect.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>

/// A session on a simulator in memory. Every callback writes a line of its own to the log, so that the log is the
/// record of all that happened, in order.
class SessionFixture : public testing::Test {
protected:
    using Lines = std::vector<std::string>;
    using Bytes = FakeSimConnect::Bytes;

    SessionFixture() {
        session.setConnectionCallback([](bool connected) { logInfo(connected ? "announced up" : "announced down"); });
        session.setBatteryCallback([](bool on) { logInfo(on ? "battery on" : "battery off"); });
        session.setQuitCallback([] { logInfo("asked to quit"); });
        session.setClientDataCallback([](std::uint32_t id, const std::uint8_t* data, std::uint32_t size) {
            logInfo("data " + std::to_string(id) + ":" + std::string(data, data + size));
        });
    }

    bool open() { return session.open("bridge", error); }

    /// Opens a session, and forgets the calls and lines of that.
    void connect() {
        ASSERT_TRUE(open());
        sim.takeCalls();
        log.clear();
    }

    LogCapture log;
    FakeSimConnect sim;
    std::string error;
    SimClientSession session{sim.library()};
};
