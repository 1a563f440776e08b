#include "simulation/simulator/virtual_simulator.h"

#include "simulation/simulator/simulator_server.h"

#include <algorithm>
#include <utility>

class VirtualSimulator::Impl : public SimulatorServer {
public:
    using SimulatorServer::SimulatorServer;
};

VirtualSimulator::VirtualSimulator(VirtualSimulatorOptions options) : impl(std::make_unique<Impl>(options)) {}
VirtualSimulator::~VirtualSimulator() = default;

bool VirtualSimulator::start(std::uint16_t port, std::string& error) {
    return impl->start(SimulatorListener(port), error);
}
bool VirtualSimulator::startOnPipe(const std::string& name, std::string& error) {
    return impl->start(SimulatorListener(name), error);
}
void VirtualSimulator::stop() {
    impl->stop();
}
std::uint16_t VirtualSimulator::port() const {
    return endpoint().port;
}
SimConnectEndpoint VirtualSimulator::endpoint() const {
    return impl->endpoint();
}

void VirtualSimulator::setBattery(bool on) {
    for (const char* battery : {"ELECTRICAL MASTER BATTERY:1", "ELECTRICAL MASTER BATTERY:2"}) {
        setAircraftVariable(battery, on ? 1 : 0);
    }
}

void VirtualSimulator::setAircraftVariable(std::string_view name, double value) {
    impl->control([&] { impl->setAircraftVariable(name, value); });
}

void VirtualSimulator::setLVar(std::string_view name, double value) {
    impl->control([&] {
        impl->world().variables.setLocal(name, value);
        impl->module().variablesChanged();
    });
}

double VirtualSimulator::evaluate(std::string_view code) const {
    double value = 0;
    impl->control([&] { value = impl->world().variables.evaluate(code); });
    return value;
}

void VirtualSimulator::setLVarsText(std::string_view text) {
    impl->control([&] { impl->module().setLVarsText(text); });
}

void VirtualSimulator::respond(std::string_view text) {
    impl->control([&] { impl->module().respond(text); });
}

void VirtualSimulator::sendAsOtherClient(std::string_view command) {
    impl->control([&] { impl->module().sendAsOtherClient(command); });
}

void VirtualSimulator::pingModule() {
    sendAsOtherClient("MF.Ping");
}

void VirtualSimulator::quit() {
    impl->control([&] {
        impl->forEachSession([](SimulatorSession& session) {
            session.sendQuit();
            session.link().finish();
        });
        impl->setRefusing(true);
        impl->reset();
    });
}

void VirtualSimulator::die() {
    impl->control([&] {
        impl->forEachSession([](SimulatorSession& session) { session.link().reset(); });
        impl->setRefusing(true);
        impl->reset();
    });
}

void VirtualSimulator::dropSessions() {
    impl->control([&] { impl->forEachSession([](SimulatorSession& session) { session.link().finish(); }); });
}

void VirtualSimulator::refuseOpens(bool refuse) {
    impl->control([&] { impl->setRefusing(refuse); });
}

void VirtualSimulator::delayOpens(std::chrono::milliseconds delay) {
    impl->control([&] { impl->faults().openDelay = delay; });
}

void VirtualSimulator::startModule() {
    impl->control([&] { impl->module().start(); });
}

void VirtualSimulator::stopModule() {
    impl->control([&] { impl->module().stop(); });
}

bool VirtualSimulator::moduleRunning() const {
    bool running = false;
    impl->control([&] { running = impl->module().running(); });
    return running;
}

void VirtualSimulator::setModuleAnswers(ModuleAnswers answers) {
    impl->control([&] { impl->module().setAnswers(answers); });
}

void VirtualSimulator::hangUpOnOpens(bool hangUp) {
    impl->control([&] { impl->world().opening.hangsUp = hangUp; });
}

void VirtualSimulator::takeProtocols(std::uint32_t oldest, std::uint32_t newest) {
    impl->control([&] {
        impl->world().opening.oldestProtocol = oldest;
        impl->world().opening.newestProtocol = newest;
    });
}

void VirtualSimulator::silenceModule(bool silent) {
    impl->control([&] { impl->module().setSilent(silent); });
}

void VirtualSimulator::failRegistrations(bool fail) {
    impl->control([&] { impl->module().setFailing(fail); });
}

void VirtualSimulator::stopReading(bool stalled) {
    impl->control([&] { impl->faults().stalled = stalled; });
}

void VirtualSimulator::sendRaw(std::span<const std::uint8_t> bytes) {
    impl->control([&] { impl->forEachSession([&](SimulatorSession& session) { session.link().send(bytes); }); });
}

void VirtualSimulator::cutMessage() {
    impl->control([&] {
        impl->forEachSession([](SimulatorSession& session) {
            session.sendCut();
            session.link().finish();
        });
    });
}

void VirtualSimulator::sendByteByByte(bool on) {
    impl->control([&] {
        impl->faults().byteByByte = on;
        impl->forEachSession([&](SimulatorSession& session) { session.link().sendByteByByte(on); });
    });
}

std::vector<SimulatorRecord> VirtualSimulator::records() const {
    return impl->records().all();
}

std::vector<std::string> VirtualSimulator::texts(SimulatorRecordKind kind) const {
    std::vector<std::string> texts;
    for (SimulatorRecord& record : impl->records().all()) {
        if (record.kind == kind) {
            texts.push_back(std::move(record.text));
        }
    }
    return texts;
}

void VirtualSimulator::clearRecords() {
    impl->records().clear();
}

void VirtualSimulator::setRecordCallback(RecordCallback callback) {
    impl->records().setCallback(std::move(callback));
}

std::size_t VirtualSimulator::sessionCount() const {
    return impl->records().sessionCount();
}

bool VirtualSimulator::waitFor(const RecordPredicate& predicate, std::chrono::milliseconds timeout) const {
    return impl->records().waitFor(predicate, timeout);
}

bool VirtualSimulator::waitForText(SimulatorRecordKind kind, std::string_view text, std::size_t count,
                                   std::chrono::milliseconds timeout) const {
    return waitFor(
        [&](const std::vector<SimulatorRecord>& records) {
            const auto matches = std::count_if(records.begin(), records.end(), [&](const SimulatorRecord& record) {
                return record.kind == kind && record.text == text;
            });
            return static_cast<std::size_t>(matches) >= count;
        },
        timeout);
}

bool VirtualSimulator::waitForKind(SimulatorRecordKind kind, std::size_t count,
                                   std::chrono::milliseconds timeout) const {
    return waitFor(
        [&](const std::vector<SimulatorRecord>& records) {
            const auto matches = std::count_if(records.begin(), records.end(),
                                               [&](const SimulatorRecord& record) { return record.kind == kind; });
            return static_cast<std::size_t>(matches) >= count;
        },
        timeout);
}

bool VirtualSimulator::waitForSessionCount(std::size_t count, std::chrono::milliseconds timeout) const {
    return impl->records().waitForSessionCount(count, timeout);
}
