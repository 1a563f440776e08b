#pragma once

#include "simulation/simulator/client_data_areas.h"
#include "simulation/simulator/simulator_records.h"
#include "simulation/simulator/variable_values.h"

#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The MobiFlight module inside the simulator: reads text commands from its clients' command areas, answers in their
/// response areas, and keeps the values of their variables in their value areas. Not synchronised.
class MobiFlightModule {
public:
    MobiFlightModule(ClientDataAreas& areas, const VariableValues& variables, SimulatorRecords& records)
        : areas(areas), variables(variables), records(records) {}

    /// Makes the areas of the client "MobiFlight" and writes the names of all local variables there. Does nothing when
    /// it already runs.
    void start();
    /// Forgets all clients. Their areas stay.
    void stop() { clients.clear(); }
    /// From its start it has a client of its own.
    bool running() const { return !clients.empty(); }

    /// Looks at an area that `session` has just written, and that held `before`.
    void areaWritten(const ClientDataArea& area, std::span<const std::uint8_t> before, std::uint32_t session);

    /// Writes the values that aren't in the value areas yet.
    void variablesChanged();
    void setAnswers(ModuleAnswers kind) { answers = kind; }
    void setSilent(bool on);
    void setFailing(bool on) { failing = on; }

    // These write into the areas of the client "MobiFlight", if they exist.
    void respond(std::string_view text);
    void setLVarsText(std::string_view text);
    void sendAsOtherClient(std::string_view command);

private:
    struct Variable {
        std::string code;
        /// As it was last written.
        double value = 0;
    };
    struct Client {
        std::string name;
        /// The value of variable i is at byte 4 * i.
        std::vector<Variable> variables;
    };

    Client* clientOfCommandArea(std::string_view areaName);
    void createClient(std::string_view name);
    void record(const std::string& command, SimulatorRecordKind changedKind, std::uint32_t session);
    void handle(Client& sender, std::string_view command);
    void addClient(const Client& sender, std::string_view name);
    void addVariable(Client& client, std::string_view code);
    void clearVariables(Client& client);
    void listLVars(const Client& client);
    void respondTo(const Client& client, std::string_view text, bool madeClient = false);
    void writeText(std::string_view suffix, std::string_view text);
    void writeValue(Client& client, std::size_t index, double value);

    ClientDataAreas& areas;
    const VariableValues& variables;
    SimulatorRecords& records;
    /// A deque: a command's sender stays where it is when the command adds a client.
    std::deque<Client> clients;
    ModuleAnswers answers = ModuleAnswers::Equal;
    /// The byte that memory holds behind the next answer.
    std::uint8_t leftover = 0;
    bool silent = false;
    bool failing = false;
};
