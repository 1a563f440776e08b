#pragma once

#include "simconnect/simconnect_api.h"
#include "simulation/simulator/virtual_simulator.h"
#include "tests/support/message_log.h"
#include "tests/support/transport.h"
#include "tests/support/wait_until.h"
#include "wire/simconnect_open.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// A client of the virtual simulator, through the C interface, with the ids that the tests use.
class SimulatorClient {
public:
    /// A busy machine mustn't make the simulator's answer, or room at its pipe, come too late.
    static constexpr std::chrono::seconds longWait{30};
    static constexpr std::uint32_t commandArea = 1;
    static constexpr std::uint32_t responseArea = 2;
    static constexpr std::uint32_t lvarsArea = 3;
    static constexpr std::uint32_t textDefinition = 11;
    static constexpr std::uint32_t lvarsDefinition = 12;
    static constexpr std::uint32_t responseRequest = 21;
    static constexpr std::uint32_t lvarsRequest = 22;

    explicit SimulatorClient(const VirtualSimulator& simulator, const char* name = "client",
                             SimConnectOpenLimits limits = {.answer = longWait, .busyPipe = longWait})
        : result(simConnectOpenAt(&handle, name, simulator.endpoint(), limits)) {}
    ~SimulatorClient() { close(); }
    SimulatorClient(const SimulatorClient&) = delete;
    SimulatorClient& operator=(const SimulatorClient&) = delete;

    SimConnectHandle get() const { return handle; }
    SimConnectResult openResult() const { return result; }
    void close() { SimConnect_Close(handle); }

    /// Attaches to a module client's areas with definitions of 256 and 4096 bytes, as the bridge does.
    void attach(const std::string& module = "MobiFlight") {
        SimConnect_MapClientDataNameToID(handle, (module + ".Command").c_str(), commandArea);
        SimConnect_MapClientDataNameToID(handle, (module + ".Response").c_str(), responseArea);
        SimConnect_MapClientDataNameToID(handle, (module + ".LVars").c_str(), lvarsArea);
        SimConnect_AddToClientDataDefinition(handle, textDefinition, 0, 256, 0, simConnectUnused);
        SimConnect_AddToClientDataDefinition(handle, lvarsDefinition, 0, 4096, 0, simConnectUnused);
        SimConnect_RequestClientData(handle, responseArea, responseRequest, textDefinition, 3, 1, 0, 0, 0);
        SimConnect_RequestClientData(handle, lvarsArea, lvarsRequest, lvarsDefinition, 3, 1, 0, 0, 0);
    }

    void command(std::string_view text) {
        std::array<char, 256> block{};
        text.copy(block.data(), block.size() - 1);
        EXPECT_EQ(SimConnect_SetClientData(handle, commandArea, textDefinition, 0, 0, 256, block.data()), simConnectOk);
    }

    SimConnectResult dispatch() { return SimConnect_CallDispatch(handle, &MessageLog::dispatchProc, &log); }

    /// Dispatches until so many messages of that kind have come; false when they don't.
    bool waitFor(std::uint32_t messageId, std::size_t count = 1) {
        return waitUntil([&] {
            dispatch();
            return messagesOf(messageId).size() >= count;
        });
    }
    /// Dispatches until the link's end is reported.
    bool waitForLoss() {
        return waitUntil([&] { return dispatch() == simConnectRemoteDisconnect; });
    }

    std::vector<std::vector<std::uint8_t>> messagesOf(std::uint32_t messageId) const {
        std::vector<std::vector<std::uint8_t>> found;
        for (const auto& message : log.messages) {
            if (MessageLog::wordOf(message, 8) == messageId) {
                found.push_back(message);
            }
        }
        return found;
    }
    /// The texts of all messages for a client data request, each to its first zero byte.
    std::vector<std::string> textsOf(std::uint32_t requestId) const {
        std::vector<std::string> texts;
        for (const auto& message : messagesOf(simConnectRecvClientData)) {
            if (MessageLog::wordOf(message, 12) == requestId) {
                const std::string payload(message.begin() + 40, message.end());
                texts.push_back(payload.substr(0, payload.find('\0')));
            }
        }
        return texts;
    }
    /// The 32-bit words at an offset of the payloads of all messages for a data request.
    std::vector<std::uint32_t> wordsOf(std::uint32_t requestId, std::size_t offset = 0) const {
        std::vector<std::uint32_t> words;
        for (const auto& message : log.messages) {
            const std::uint32_t id = MessageLog::wordOf(message, 8);
            if ((id == simConnectRecvClientData || id == simConnectRecvSimobjectData) &&
                MessageLog::wordOf(message, 12) == requestId) {
                words.push_back(MessageLog::wordOf(message, 40 + offset));
            }
        }
        return words;
    }
    /// Dispatches until everything sent before has been answered: the answer to this comes behind all others.
    bool settle() {
        const std::size_t before = messagesOf(simConnectRecvException).size();
        SimConnect_TransmitClientEvent(handle, 0, 0xDEAD, 0, 1, 0x10);
        return waitFor(simConnectRecvException, before + 1);
    }
    /// The exceptions that came, as code, send id and index.
    std::vector<std::array<std::uint32_t, 3>> exceptions() const {
        std::vector<std::array<std::uint32_t, 3>> found;
        for (const auto& message : messagesOf(simConnectRecvException)) {
            found.push_back(
                {MessageLog::wordOf(message, 12), MessageLog::wordOf(message, 16), MessageLog::wordOf(message, 20)});
        }
        return found;
    }

    MessageLog log;

private:
    SimConnectHandle handle = nullptr;
    SimConnectResult result;
};

/// Starts a simulator on a port or a pipe of its own.
inline void startOn(VirtualSimulator& simulator, Transport transport) {
    std::string error;
    EXPECT_TRUE(transport == Transport::Tcp ? simulator.start(0, error) : simulator.startOnPipe(freePipeName(), error))
        << error;
}

/// A running simulator on a port or a pipe of its own.
class RunningSimulator : public VirtualSimulator {
public:
    explicit RunningSimulator(Transport transport = Transport::Tcp, VirtualSimulatorOptions options = {})
        : VirtualSimulator(options) {
        startOn(*this, transport);
    }
};
