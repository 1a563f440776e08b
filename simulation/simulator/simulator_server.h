#pragma once

#include "simulation/simulator/mobiflight_module.h"
#include "simulation/simulator/simulator_listener.h"
#include "simulation/simulator/simulator_records.h"
#include "simulation/simulator/simulator_session.h"
#include "simulation/simulator/socket_wait.h"
#include "simulation/simulator/virtual_simulator.h"
#include "simulation/simulator/wake_socket.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// How the simulator treats its clients. VirtualSimulator documents each at the member function that sets it.
struct SimulatorFaults {
    bool refusing = false;
    bool stalled = false;
    bool byteByByte = false;
    std::chrono::milliseconds openDelay{0};
};

/// The virtual simulator's thread, its connections and what they share. One mutex guards all of it but the records,
/// which have their own below it.
class SimulatorServer {
public:
    explicit SimulatorServer(const VirtualSimulatorOptions& options);
    ~SimulatorServer() { stop(); }
    SimulatorServer(const SimulatorServer&) = delete;
    SimulatorServer& operator=(const SimulatorServer&) = delete;

    bool start(SimulatorListener where, std::string& error);
    void stop();
    SimConnectEndpoint endpoint() const;

    /// Runs `action` under the lock while the thread waits for no socket: a socket in a wait really closes only when
    /// the wait ends, and until then clients would still reach it.
    template <typename Action>
    void control(const Action& action) {
        std::unique_lock lock(mutex);
        ++controls;
        wakeSocket.wake();
        turned.wait(lock, [this] { return !polling; });
        action();
        noteEnds();
        --controls;
        lock.unlock();
        turned.notify_all();
        // The thread delivers the records.
        wakeSocket.wake();
    }

    // Only inside `control`.

    /// Calls `action` with each session whose connection is open.
    template <typename Action>
    void forEachSession(const Action& action) {
        for (const auto& session : sessions) {
            if (session->link().live()) {
                action(*session);
            }
        }
    }
    void setRefusing(bool refuse);
    void setAircraftVariable(std::string_view name, double value);
    /// Prepares the simulator's next run: removes all areas and restarts the module, if it is installed.
    void reset();
    SimulatorFaults& faults() { return behaviour; }
    SimulatorWorld& world() { return shared; }
    MobiFlightModule& module() { return mobiflight; }

    SimulatorRecords& records() { return received; }
    const SimulatorRecords& records() const { return received; }

private:
    using Clock = SimulatorSession::Clock;

    void run();
    void turn();
    std::chrono::milliseconds interests(std::vector<SocketInterest>& wanted);

    // These need the mutex.
    void listenAgain();
    void acceptAll();
    void serve(SimulatorSession& session, Clock::time_point now);
    void noteEnds();
    void areaWritten(const ClientDataArea& area, std::span<const std::uint8_t> before, std::uint32_t session);

    const VirtualSimulatorOptions options;
    SimulatorRecords received;
    std::thread thread;
    std::atomic<bool> running{false};
    /// Ends the thread's wait. Never replaced, so any thread may use it.
    const WakeSocket wakeSocket;

    /// Guards the members below.
    mutable std::mutex mutex;
    std::condition_variable turned;
    /// The thread waits for sockets, or is about to.
    bool polling = false;
    /// How many controls wait to run before the thread waits again.
    std::size_t controls = 0;
    SimulatorListener listener;
    SimulatorFaults behaviour;
    SimulatorWorld shared{received, {}, {}};
    MobiFlightModule mobiflight{shared.areas, shared.variables, received};
    std::vector<std::unique_ptr<SimulatorSession>> sessions;
    std::uint32_t lastSession = 0;
};
