#include "simulation/simulator/simulator_server.h"

#include <algorithm>
#include <utility>

namespace {

// The longest wait while a connection ends or is delayed, while the port is still taken, or with pipes, which can't be
// waited for together with sockets.
constexpr std::chrono::milliseconds shortWait{5};
constexpr std::chrono::milliseconds longWait{1000};

} // namespace

SimulatorServer::SimulatorServer(const VirtualSimulatorOptions& options) : options(options) {
    shared.areas.setListener([this](const ClientDataArea& area, std::span<const std::uint8_t> before,
                                    std::uint32_t session) { areaWritten(area, before, session); });
    shared.setAircraftVariable = [this](std::string_view name, double value) { setAircraftVariable(name, value); };
    shared.fire = [this](const FiredEvent& event) {
        forEachSession([&](SimulatorSession& session) { session.eventFired(event); });
    };
    reset();
}

bool SimulatorServer::start(SimulatorListener where, std::string& error) {
    if (running) {
        error = "Virtual simulator already running";
        return false;
    }
    {
        const std::lock_guard lock(mutex);
        if (!where.listen(error)) {
            return false;
        }
        if (!wakeSocket.valid()) {
            error = "Failed to make the virtual simulator's wake socket";
            return false;
        }
        listener = std::move(where);
        behaviour.refusing = false;
    }
    running = true;
    thread = std::thread([this] { run(); });
    return true;
}

void SimulatorServer::stop() {
    if (!running.exchange(false)) {
        return;
    }
    wakeSocket.wake();
    thread.join();
    control([this] {
        forEachSession([](SimulatorSession& session) { session.link().reset(); });
        listener.close();
    });
    {
        const std::lock_guard lock(mutex);
        sessions.clear();
    }
    received.deliver();
}

SimConnectEndpoint SimulatorServer::endpoint() const {
    const std::lock_guard lock(mutex);
    return listener.endpoint();
}

void SimulatorServer::setRefusing(bool refuse) {
    behaviour.refusing = refuse;
    if (refuse) {
        listener.close();
    } else {
        listenAgain();
    }
}

void SimulatorServer::setAircraftVariable(std::string_view name, double value) {
    if (shared.variables.aircraft(name) != value) {
        shared.variables.setAircraft(name, value);
        forEachSession([](SimulatorSession& session) { session.variablesChanged(); });
        mobiflight.variablesChanged();
    }
}

// Another program's connection may use the port for a moment; the thread then tries again.
void SimulatorServer::listenAgain() {
    if (running && !behaviour.refusing && !listener.listening()) {
        std::string error;
        listener.listen(error);
    }
}

void SimulatorServer::reset() {
    shared.areas.clear();
    mobiflight.stop();
    if (options.moduleInstalled) {
        mobiflight.start();
    }
}

void SimulatorServer::areaWritten(const ClientDataArea& area, std::span<const std::uint8_t> before,
                                  std::uint32_t session) {
    forEachSession([&](SimulatorSession& reader) { reader.areaWritten(area, before); });
    mobiflight.areaWritten(area, before, session);
}

void SimulatorServer::run() {
    std::vector<SocketInterest> wanted;
    while (running) {
        const std::chrono::milliseconds limit = interests(wanted);
        waitForSockets(wanted, limit);
        turn();
        received.deliver();
    }
}

std::chrono::milliseconds SimulatorServer::interests(std::vector<SocketInterest>& wanted) {
    std::unique_lock lock(mutex);
    turned.wait(lock, [this] { return controls == 0; });
    polling = true;
    wanted.assign(1, {wakeSocket.handle(), true, false});
    bool flowing = false;
    bool timed = !behaviour.refusing && !listener.listening();
    const auto want = [&](const std::optional<SocketInterest>& interest) {
        timed = timed || !interest;
        if (interest) {
            wanted.push_back(*interest);
        }
    };
    if (listener.listening()) {
        want(listener.interest());
    }
    const Clock::time_point now = Clock::now();
    for (const auto& session : sessions) {
        const SimulatorLink& link = session->link();
        const bool early = session->serviceBegin() > now;
        timed = timed || early || !link.live();
        // Doesn't wait for a session that isn't served: its unread bytes would end each wait at once.
        if (link.live() && !early && !behaviour.stalled) {
            want(link.interest(true));
            flowing = flowing || link.flowing();
        } else if (link.live() && link.backlogged()) {
            want(link.interest(false));
        }
    }
    if (timed && flowing) {
        return std::chrono::milliseconds(0);
    }
    return timed ? shortWait : longWait;
}

void SimulatorServer::turn() {
    wakeSocket.drain();
    const std::lock_guard lock(mutex);
    polling = false;
    turned.notify_all();
    listenAgain();
    acceptAll();
    const Clock::time_point now = Clock::now();
    for (const auto& session : sessions) {
        serve(*session, now);
    }
    noteEnds();
    std::erase_if(sessions, [](const auto& session) { return session->link().over(); });
}

void SimulatorServer::acceptAll() {
    while (listener.listening()) {
        ByteStream accepted = listener.accept();
        if (!accepted.valid()) {
            return;
        }
        sessions.push_back(std::make_unique<SimulatorSession>(std::move(accepted), ++lastSession, shared,
                                                              Clock::now() + behaviour.openDelay));
    }
}

void SimulatorServer::serve(SimulatorSession& session, Clock::time_point now) {
    SimulatorLink& link = session.link();
    link.sendByteByByte(behaviour.byteByByte);
    if (link.live()) {
        link.flush();
    } else if (!link.over()) {
        link.continueFinish(now);
    }
    if (link.live() && !behaviour.stalled && session.serviceBegin() <= now) {
        session.serve();
    }
}

void SimulatorServer::noteEnds() {
    std::size_t live = 0;
    for (const auto& session : sessions) {
        if (session->link().live()) {
            ++live;
        } else {
            session->noteEnd();
        }
    }
    received.setSessionCount(live);
}
