#include "simulation/simulator/mobiflight_module.h"

#include "text/ascii.h"
#include "wire/requests.h"

#include <algorithm>
#include <bit>

namespace {

constexpr std::string_view defaultClient = "MobiFlight";
constexpr std::string_view commandSuffix = ".Command";
constexpr std::string_view responseSuffix = ".Response";
constexpr std::string_view lvarsSuffix = ".LVars";
constexpr std::string_view stringVarsSuffix = ".StringVars";
constexpr std::size_t messageBytes = 1024;
constexpr std::size_t lvarsBytes = 4096;
constexpr std::size_t stringVarsBytes = 8192;
constexpr std::size_t valueSize = 4;

constexpr std::string_view moduleVersion = "1.0.1";
constexpr std::string_view dummyCommand = "MF.DummyCmd";
constexpr std::string_view executePrefix = "MF.SimVars.Set.";
constexpr std::string_view addClientPrefix = "MF.Clients.Add.";
constexpr std::string_view addVariablePrefix = "MF.SimVars.Add.";
constexpr std::size_t listedLVars = 1000;

// The module copies its answer with the memory behind it, so a reader must stop at the text's zero byte.
constexpr std::uint8_t leftoverByte = 0xA5;
constexpr std::uint8_t otherLeftoverByte = 0x5A;

std::string textOf(std::span<const std::uint8_t> bytes) {
    const auto end = std::find(bytes.begin(), bytes.end(), std::uint8_t{0});
    return {bytes.begin(), end};
}

std::string areaName(std::string_view client, std::string_view suffix) {
    return std::string(client) + std::string(suffix);
}

// Copies the text into the bytes, followed by a zero byte and `filler`. Cuts a text that is too long for both.
void fillWithText(std::span<std::uint8_t> bytes, std::string_view text, std::uint8_t filler) {
    std::fill(bytes.begin(), bytes.end(), filler);
    const std::string_view kept = text.substr(0, bytes.size() - 1);
    std::copy(kept.begin(), kept.end(), bytes.begin());
    bytes[kept.size()] = 0;
}

// The module looks for a prefix anywhere in a command, but what it then cuts off is as many characters at the front.
bool has(std::string_view command, std::string_view prefix) {
    return command.find(prefix) != std::string_view::npos;
}

SimulatorRecordKind kindOf(std::string_view command) {
    if (command == dummyCommand) {
        return SimulatorRecordKind::Dummy;
    }
    return has(command, executePrefix) ? SimulatorRecordKind::Executed : SimulatorRecordKind::Command;
}

} // namespace

void MobiFlightModule::start() {
    if (running()) {
        return;
    }
    createClient(defaultClient);
    for (const std::string& name : variables.localNames()) {
        respond(name);
    }
}

void MobiFlightModule::createClient(std::string_view name) {
    clients.push_back({std::string(name), {}});
    areas.create(areaName(name, commandSuffix), messageBytes);
    areas.create(areaName(name, responseSuffix), messageBytes);
    areas.create(areaName(name, lvarsSuffix), lvarsBytes);
    areas.create(areaName(name, stringVarsSuffix), stringVarsBytes);
}

MobiFlightModule::Client* MobiFlightModule::clientOfCommandArea(std::string_view name) {
    const std::string wanted = lowerCased(name);
    const auto found = std::find_if(clients.begin(), clients.end(), [&](const Client& client) {
        return lowerCased(areaName(client.name, commandSuffix)) == wanted;
    });
    return found == clients.end() ? nullptr : &*found;
}

void MobiFlightModule::areaWritten(const ClientDataArea& area, std::span<const std::uint8_t> before,
                                   std::uint32_t session) {
    Client* const sender = clientOfCommandArea(area.name);
    if (sender == nullptr) {
        return;
    }
    const std::string command = textOf(area.bytes);
    if (std::equal(before.begin(), before.end(), area.bytes.begin(), area.bytes.end())) {
        record(command, SimulatorRecordKind::Unchanged, session);
        return;
    }
    const SimulatorRecordKind kind = kindOf(command);
    record(command, kind, session);
    if (!silent && kind == SimulatorRecordKind::Command) {
        handle(*sender, command);
    }
}

void MobiFlightModule::record(const std::string& command, SimulatorRecordKind kind, std::uint32_t session) {
    SimulatorRecord entry;
    entry.kind = kind;
    entry.session = session;
    entry.text = kind == SimulatorRecordKind::Executed ? command.substr(executePrefix.size()) : command;
    records.add(std::move(entry));
}

void MobiFlightModule::handle(Client& sender, std::string_view command) {
    if (has(command, addClientPrefix)) {
        addClient(sender, command.substr(addClientPrefix.size()));
    } else if (has(command, addVariablePrefix)) {
        addVariable(sender, command.substr(addVariablePrefix.size()));
    } else if (command == "MF.SimVars.Clear") {
        clearVariables(sender);
    } else if (command == "MF.Ping") {
        respondTo(sender, "MF.Pong");
    } else if (command == "MF.Version.Get") {
        respondTo(sender, "MF.Version." + std::string(moduleVersion));
    } else if (command == "MF.LVars.List") {
        listLVars(sender);
    }
    // No other command has an effect that a client could see.
}

void MobiFlightModule::addClient(const Client& sender, std::string_view name) {
    const std::string answer = std::string(addClientPrefix) + std::string(name);
    if (failing) {
        respondTo(sender, answer + ".Error");
        return;
    }
    const bool unknown = clientOfCommandArea(areaName(name, commandSuffix)) == nullptr;
    if (unknown) {
        createClient(name);
    }
    respondTo(sender, answer + ".Finished", unknown);
}

void MobiFlightModule::addVariable(Client& client, std::string_view code) {
    client.variables.push_back({std::string(code)});
    writeValue(client, client.variables.size() - 1, variables.evaluate(code));
}

void MobiFlightModule::clearVariables(Client& client) {
    for (std::size_t i = 0; i < client.variables.size(); ++i) {
        writeValue(client, i, 0);
    }
    client.variables.clear();
}

void MobiFlightModule::listLVars(const Client& client) {
    respondTo(client, "MF.LVars.List.Start");
    std::vector<std::string> names = variables.localNames();
    names.resize(std::min(names.size(), listedLVars));
    for (const std::string& name : names) {
        respondTo(client, name);
    }
    respondTo(client, "MF.LVars.List.End");
}

void MobiFlightModule::respond(std::string_view text) {
    respondTo({std::string(defaultClient), {}}, text);
}

void MobiFlightModule::respondTo(const Client& client, std::string_view text, bool madeClient) {
    std::uint8_t filler = leftoverByte;
    if (answers == ModuleAnswers::Different) {
        filler = ++leftover;
    } else if (answers == ModuleAnswers::Measured && madeClient) {
        filler = otherLeftoverByte;
    }
    areas.write(areaName(client.name, responseSuffix),
                [&](std::span<std::uint8_t> bytes) { fillWithText(bytes, text, filler); });
}

void MobiFlightModule::setLVarsText(std::string_view text) {
    writeText(lvarsSuffix, text);
}

void MobiFlightModule::sendAsOtherClient(std::string_view command) {
    writeText(commandSuffix, command);
}

void MobiFlightModule::writeText(std::string_view suffix, std::string_view text) {
    areas.write(areaName(defaultClient, suffix), [&](std::span<std::uint8_t> bytes) { fillWithText(bytes, text, 0); });
}

void MobiFlightModule::writeValue(Client& client, std::size_t index, double value) {
    client.variables[index].value = value;
    const std::string name = areaName(client.name, lvarsSuffix);
    const ClientDataArea* const area = areas.find(name);
    if (area == nullptr || (index + 1) * valueSize > area->bytes.size()) {
        return;
    }
    areas.write(name, [&](std::span<std::uint8_t> bytes) {
        SimConnectWire::Bytes encoded;
        SimConnectWire::appendNumber(encoded, std::bit_cast<std::uint32_t>(static_cast<float>(value)));
        std::copy(encoded.begin(), encoded.end(), bytes.begin() + static_cast<std::ptrdiff_t>(index * valueSize));
    });
}

void MobiFlightModule::variablesChanged() {
    for (Client& client : clients) {
        for (std::size_t i = 0; i < client.variables.size() && !silent; ++i) {
            const double value = variables.evaluate(client.variables[i].code);
            if (value != client.variables[i].value) {
                writeValue(client, i, value);
            }
        }
    }
}

void MobiFlightModule::setSilent(bool on) {
    silent = on;
    variablesChanged();
}
