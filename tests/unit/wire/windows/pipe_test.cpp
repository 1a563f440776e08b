#include "wire/pipe.h"

#include "tests/support/loopback_peer.h"
#include "tests/support/message_log.h"
#include "wire/requests.h"
#include "wire/simconnect_open.h"
#include "wire/wire_session.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// A simulator's end of a pipe, made and used by the system's own calls, all of which wait.
class PipeServer {
public:
    explicit PipeServer(DWORD kind = PIPE_TYPE_BYTE, DWORD buffer = 4096, DWORD access = PIPE_ACCESS_DUPLEX)
        : handle(CreateNamedPipeA((R"(\\.\pipe\)" + name).c_str(), access, kind, 1, buffer, buffer, 0, nullptr)) {
        EXPECT_NE(handle, INVALID_HANDLE_VALUE);
    }
    ~PipeServer() { close(); }
    PipeServer(const PipeServer&) = delete;
    PipeServer& operator=(const PipeServer&) = delete;

    const std::string& pipeName() const { return name; }
    SimConnectEndpoint endpoint() const { return {".", 0, AddressFamily::Any, name}; }

    bool tryWrite(const PeerBytes& bytes) const {
        DWORD count = 0;
        return WriteFile(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) != FALSE &&
               count == bytes.size();
    }
    void write(const PeerBytes& bytes) const { EXPECT_TRUE(tryWrite(bytes)); }
    /// One read: of a pipe that is read by messages, one of those.
    PeerBytes read() const {
        PeerBytes bytes(100000);
        DWORD count = 0;
        EXPECT_TRUE(ReadFile(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr));
        bytes.resize(count);
        return bytes;
    }
    /// Whether the client has gone and left nothing to read.
    bool hasEnded() const {
        std::array<char, 1> byte{};
        DWORD count = 0;
        return ReadFile(handle, byte.data(), 1, &count, nullptr) == FALSE && GetLastError() == ERROR_BROKEN_PIPE;
    }
    /// Takes the pipe from its client at once, with all that is in it.
    void disconnect() const { EXPECT_TRUE(DisconnectNamedPipe(handle)); }
    void close() {
        if (handle != nullptr) {
            CloseHandle(std::exchange(handle, nullptr));
        }
    }

private:
    std::string name = freePipeName();
    HANDLE handle;
};

/// A session on such a server's pipe.
class PipeSession : public testing::Test {
protected:
    void connect(DWORD kind = PIPE_TYPE_BYTE, DWORD buffer = 4096, SessionLimits limits = {}) {
        server = std::make_unique<PipeServer>(kind, buffer);
        session = std::make_unique<WireSession>(connectPipe(".", server->pipeName(), milliseconds(0)), limits);
    }
    SimConnectResult dispatch() { return session->dispatch(&MessageLog::dispatchProc, &log); }
    SimConnectResult setData(std::size_t size) {
        const std::vector<std::uint8_t> data(size, 7);
        return session->request(
            [&](auto& out, auto head) { SimConnectWire::appendSetClientData(out, head, 1, 1, 0, data); });
    }
    bool dispatchUntil(std::size_t count) {
        return waitUntil([&] {
            EXPECT_EQ(dispatch(), simConnectOk);
            return log.messages.size() >= count;
        });
    }
    bool dispatchUntilLost() {
        return waitUntil([&] { return dispatch() == simConnectRemoteDisconnect; });
    }

    std::unique_ptr<PipeServer> server;
    std::unique_ptr<WireSession> session;
    MessageLog log;
};

TEST(PipeOpen, FailsOnAPipeWhoseInstancesAreAllTaken) {
    PipeServer server;
    const Pipe first = connectPipe(".", server.pipeName(), milliseconds(0));
    ASSERT_TRUE(first.valid());
    EXPECT_FALSE(connectPipe(".", server.pipeName(), milliseconds(0)).valid());
    SimConnectHandle handle = nullptr;
    const auto begin = Clock::now();
    EXPECT_EQ(simConnectOpenAt(&handle, "late", server.endpoint()), simConnectFail);
    EXPECT_LT(Clock::now() - begin, std::chrono::seconds(4));
}

TEST(PipeOpen, WaitsForAnInstanceThatIsMadeMeanwhile) {
    LoopbackPeer peer(Transport::Pipe);
    // Nobody answers.
    constexpr SimConnectOpenLimits noWait{milliseconds(0)};
    SimConnectHandle first = nullptr;
    SimConnectHandle second = nullptr;
    ASSERT_EQ(simConnectOpenAt(&first, "first", peer.endpoint(), noWait), simConnectOk);
    std::thread accepting([&] {
        std::this_thread::sleep_for(milliseconds(100));
        EXPECT_TRUE(peer.accept());
    });
    EXPECT_EQ(simConnectOpenAt(&second, "second", peer.endpoint(), noWait), simConnectOk);
    accepting.join();
    SimConnect_Close(first);
    SimConnect_Close(second);
}

TEST(PipeOpen, FailsAtOnceOnAPipeThatGoesOneWayOnly) {
    const PipeServer server(PIPE_TYPE_BYTE, 4096, PIPE_ACCESS_OUTBOUND);
    SimConnectHandle handle = nullptr;
    const auto begin = Clock::now();
    EXPECT_EQ(simConnectOpenAt(&handle, "test", server.endpoint()), simConnectFail);
    EXPECT_LT(Clock::now() - begin, milliseconds(900));
}

TEST(PipeListening, FailsWhereSomebodyElseListens) {
    const PipeServer taken;
    PipeListener listener(taken.pipeName(), 0);
    std::string error;
    EXPECT_FALSE(listener.listen(error));
    EXPECT_TRUE(error.starts_with("Failed to listen on pipe " + taken.pipeName() + ": ")) << error;
    EXPECT_FALSE(listener.accept().valid());
}

TEST(PipeListening, FailsWithANameThatIsTooLong) {
    PipeListener listener(std::string(70000, 'x'), 0);
    std::string error;
    EXPECT_FALSE(listener.listen(error));
    EXPECT_NE(error, "");
}

TEST(PipeListening, TakesManyClientsAtOnce) {
    const std::string name = freePipeName();
    PipeListener listener(name, 0);
    std::string error;
    ASSERT_TRUE(listener.listen(error)) << error;
    std::vector<Pipe> clients;
    std::vector<Pipe> accepted;
    for (int i = 0; i < 40; ++i) {
        clients.push_back(connectPipe(".", name, milliseconds(1000)));
        ASSERT_TRUE(clients.back().valid());
        ASSERT_TRUE(waitUntil([&] {
            accepted.push_back(listener.accept());
            return accepted.back().valid();
        }));
    }
    EXPECT_FALSE(listener.accept().valid());
}

TEST_F(PipeSession, ServerThatWritesByMessagesIsUnderstood) {
    connect(PIPE_TYPE_MESSAGE, 65536);
    ASSERT_EQ(dispatch(), simConnectOk);
    server->write(simulatorMessage(2, PeerBytes(296)));
    PeerBytes two = simulatorMessage(8);
    const PeerBytes other = simulatorMessage(16, PeerBytes(3000));
    two.insert(two.end(), other.begin(), other.end());
    server->write(two);
    // A message whose bytes come in two writes.
    server->write({12, 0, 0, 0, 4, 0});
    server->write({0, 0, 3, 0, 0, 0});
    ASSERT_TRUE(dispatchUntil(4));
    EXPECT_EQ(log.ids(), (std::vector<std::uint32_t>{2, 8, 16, 3}));
}

TEST_F(PipeSession, WriteOfNothingIsNoEnd) {
    connect(PIPE_TYPE_MESSAGE);
    server->write({});
    ASSERT_EQ(dispatch(), simConnectOk);
    server->write(simulatorMessage(2));
    ASSERT_TRUE(dispatchUntil(1));
}

TEST_F(PipeSession, ServerThatReadsByMessagesGetsOneRequestEach) {
    connect(PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, 2048);
    constexpr std::size_t requests = 20;
    for (std::size_t i = 0; i < requests; ++i) {
        // The most of them wait, since the pipe holds but a few.
        ASSERT_EQ(setData(500), simConnectOk);
    }
    for (std::uint32_t i = 0; i < requests; ++i) {
        const PeerBytes request = server->read();
        ASSERT_EQ(request.size(), 536U);
        ASSERT_EQ(MessageLog::wordOf(request, 12), i + 1);
        ASSERT_EQ(dispatch(), simConnectOk);
    }
}

TEST_F(PipeSession, SilentServerCostsNoTime) {
    connect();
    const auto begin = Clock::now();
    for (int i = 0; i < 200; ++i) {
        ASSERT_EQ(dispatch(), simConnectOk);
    }
    session->close();
    EXPECT_LT(Clock::now() - begin, std::chrono::seconds(2));
    EXPECT_TRUE(log.messages.empty());
}

TEST_F(PipeSession, ServerThatTakesThePipeAwayInTheMiddleOfAMessageEndsTheLink) {
    connect();
    ASSERT_EQ(dispatch(), simConnectOk);
    server->write({12, 0, 0, 0, 4, 0});
    server->disconnect();
    EXPECT_TRUE(dispatchUntilLost());
    EXPECT_TRUE(log.messages.empty());
    EXPECT_EQ(setData(1), simConnectRemoteDisconnect);
}

TEST_F(PipeSession, ServerThatDiesInTheMiddleOfAMessageEndsTheLink) {
    connect();
    server->write(simulatorMessage(2));
    server->write({12, 0, 0, 0, 4, 0});
    server->close();
    EXPECT_TRUE(dispatchUntilLost());
    EXPECT_EQ(log.ids(), std::vector<std::uint32_t>{2});
}

TEST_F(PipeSession, ServerThatDiesUnderAPendingWriteEndsTheLink) {
    connect();
    for (int i = 0; i < 10; ++i) {
        ASSERT_EQ(setData(8192), simConnectOk);
    }
    server->close();
    EXPECT_TRUE(dispatchUntilLost());
}

TEST_F(PipeSession, CloseUnderPendingReadAndWriteIsQuick) {
    connect();
    ASSERT_EQ(dispatch(), simConnectOk);
    for (int i = 0; i < 10; ++i) {
        ASSERT_EQ(setData(8192), simConnectOk);
    }
    const auto begin = Clock::now();
    session->close();
    EXPECT_LT(Clock::now() - begin, milliseconds(900));
    EXPECT_EQ(dispatch(), simConnectInvalidArgument);
}

TEST_F(PipeSession, SessionThatGoesWithTransfersPendingLeavesThePipe) {
    for (int i = 0; i < 50; ++i) {
        connect();
        ASSERT_EQ(dispatch(), simConnectOk);
        ASSERT_EQ(setData(8192), simConnectOk);
        session.reset();
        EXPECT_FALSE(server->tryWrite(simulatorMessage(2)));
    }
}

TEST_F(PipeSession, TransfersOutliveTheThreadThatBeganThem) {
    connect();
    std::thread([&] {
        EXPECT_EQ(dispatch(), simConnectOk);
        EXPECT_EQ(setData(8192), simConnectOk);
    }).join();
    server->write(simulatorMessage(2));
    ASSERT_TRUE(dispatchUntil(1));
    PeerBytes received;
    while (received.size() < 36 + 8192) {
        const PeerBytes piece = server->read();
        received.insert(received.end(), piece.begin(), piece.end());
    }
    EXPECT_EQ(received.size(), 36U + 8192U);
    EXPECT_EQ(dispatch(), simConnectOk);
}

TEST(PipeSend, WriteWhoseEndAReceiveHasSeenIsNotMadeAgain) {
    const PipeServer server(PIPE_TYPE_BYTE, 1024);
    Pipe client = connectPipe(".", server.pipeName(), milliseconds(0));
    const PeerBytes sent(5000, 7);
    ASSERT_EQ(client.send(sent).status, TransferStatus::WouldBlock);
    PeerBytes received;
    while (received.size() < sent.size()) {
        const PeerBytes piece = server.read();
        received.insert(received.end(), piece.begin(), piece.end());
    }
    std::array<std::uint8_t, 10> room{};
    EXPECT_EQ(client.receive(room).status, TransferStatus::WouldBlock);
    const Transfer transfer = client.send(sent);
    EXPECT_EQ(transfer.status, TransferStatus::Done);
    EXPECT_EQ(transfer.count, sent.size());
    client.close();
    EXPECT_TRUE(server.hasEnded());
}

TEST(PipeReceive, TakesWhatWasReadInPieces) {
    const PipeServer server;
    Pipe client = connectPipe(".", server.pipeName(), milliseconds(0));
    server.write({1, 2, 3, 4, 5});
    PeerBytes received;
    std::array<std::uint8_t, 2> room{};
    ASSERT_TRUE(waitUntil([&] {
        const Transfer transfer = client.receive(room);
        received.insert(received.end(), room.begin(), room.begin() + static_cast<std::ptrdiff_t>(transfer.count));
        return received.size() >= 5;
    }));
    EXPECT_EQ(received, (PeerBytes{1, 2, 3, 4, 5}));
    EXPECT_EQ(client.receive(room).status, TransferStatus::WouldBlock);
}

TEST(PipeWithoutAnEnd, TransfersFail) {
    Pipe none;
    std::array<std::uint8_t, 1> byte{};
    EXPECT_FALSE(none.valid());
    EXPECT_EQ(none.send(byte).status, TransferStatus::Failed);
    EXPECT_EQ(none.receive(byte).status, TransferStatus::Failed);
    none.close();
}

TEST_F(PipeSession, StalledServerIsGivenUpAfterTheLimit) {
    SessionLimits limits;
    limits.stall = milliseconds(100);
    connect(PIPE_TYPE_BYTE, 1024, limits);
    ASSERT_EQ(setData(8192), simConnectOk);
    EXPECT_TRUE(dispatchUntilLost());
}

} // namespace
