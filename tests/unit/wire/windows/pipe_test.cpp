#include "wire/pipe.h"

#include "tests/unit/wire/wire_session_fixture.h"
#include "wire/simconnect_open.h"

#include <windows.h>

#include <array>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

namespace {

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
    /// As many reads as it takes to get so many bytes.
    PeerBytes readAll(std::size_t size) const {
        PeerBytes bytes;
        while (bytes.size() < size && !testing::Test::HasFailure()) {
            bytes = joined({bytes, read()});
        }
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
class PipeSession : public testing::Test, protected SessionCalls {
protected:
    void connect(DWORD kind = PIPE_TYPE_BYTE, DWORD buffer = 4096, SessionLimits limits = {}) {
        server = std::make_unique<PipeServer>(kind, buffer);
        session = std::make_unique<WireSession>(connectPipe(".", server->pipeName(), milliseconds(0)), limits);
    }
    /// Makes requests of which most wait, since the pipe holds only a few bytes.
    void leaveWritesPending() {
        for (int i = 0; i < 10; ++i) {
            ASSERT_EQ(setData(7, 8192), simConnectOk);
        }
    }

    std::unique_ptr<PipeServer> server;
};

TEST(PipeOpen, FailsOnAPipeWhoseInstancesAreAllTaken) {
    PipeServer server;
    const Pipe first = connectPipe(".", server.pipeName(), milliseconds(0));
    ASSERT_TRUE(first.valid());
    EXPECT_FALSE(connectPipe(".", server.pipeName(), milliseconds(0)).valid());
    SimConnectHandle handle = nullptr;
    EXPECT_EQ(simConnectOpenAt(&handle, "late", server.endpoint(), {.busyPipe = milliseconds(0)}), simConnectFail);
}

TEST(PipeOpen, WaitsForAnInstanceThatIsMadeMeanwhile) {
    LoopbackPeer peer(Transport::Pipe);
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

TEST(PipeOpen, FailsOnAPipeThatGoesOneWayOnly) {
    const PipeServer server(PIPE_TYPE_BYTE, 4096, PIPE_ACCESS_OUTBOUND);
    SimConnectHandle handle = nullptr;
    EXPECT_EQ(simConnectOpenAt(&handle, "test", server.endpoint()), simConnectFail);
}

TEST_F(PipeSession, ServerThatWritesByMessagesIsUnderstood) {
    connect(PIPE_TYPE_MESSAGE, 65536);
    // A write of nothing is no end.
    server->write({});
    ASSERT_EQ(dispatch(), simConnectOk);
    server->write(simulatorMessage(2, PeerBytes(296)));
    server->write(joined({simulatorMessage(8), simulatorMessage(16, PeerBytes(3000))}));
    // A message whose bytes come in two writes.
    server->write({12, 0, 0, 0, 4, 0});
    server->write({0, 0, 3, 0, 0, 0});
    ASSERT_TRUE(dispatchUntil(4));
    EXPECT_EQ(log.ids(), (std::vector<std::uint32_t>{2, 8, 16, 3}));
}

TEST_F(PipeSession, ServerThatReadsByMessagesGetsOneRequestEach) {
    connect(PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, 2048);
    constexpr std::size_t requests = 20;
    for (std::size_t i = 0; i < requests; ++i) {
        // The most of them wait, since the pipe holds but a few.
        ASSERT_EQ(setData(7, 500), simConnectOk);
    }
    for (std::uint32_t i = 0; i < requests; ++i) {
        const PeerBytes request = server->read();
        ASSERT_EQ(request.size(), 536U);
        ASSERT_EQ(MessageLog::wordOf(request, 12), i + 1);
        ASSERT_EQ(dispatch(), simConnectOk);
    }
}

TEST_F(PipeSession, ServerThatTakesThePipeAwayInTheMiddleOfAMessageEndsTheLink) {
    connect();
    ASSERT_EQ(dispatch(), simConnectOk);
    server->write({12, 0, 0, 0, 4, 0});
    server->disconnect();
    EXPECT_EQ(dispatchUntilLost(), simConnectRemoteDisconnect);
    EXPECT_TRUE(log.messages.empty());
    EXPECT_EQ(setData(7, 1), simConnectRemoteDisconnect);
}

TEST_F(PipeSession, ServerThatGoesUnderAPendingWriteEndsTheLink) {
    connect();
    leaveWritesPending();
    server->close();
    EXPECT_EQ(dispatchUntilLost(), simConnectRemoteDisconnect);
}

TEST_F(PipeSession, CloseEndsPendingReadsAndWrites) {
    connect();
    ASSERT_EQ(dispatch(), simConnectOk);
    leaveWritesPending();
    session->close();
    EXPECT_EQ(dispatch(), simConnectInvalidArgument);
    EXPECT_FALSE(server->tryWrite(simulatorMessage(2)));
}

TEST_F(PipeSession, SessionDestroyedWithTransfersPendingLeavesThePipe) {
    for (int i = 0; i < 50; ++i) {
        connect();
        ASSERT_EQ(dispatch(), simConnectOk);
        ASSERT_EQ(setData(7, 8192), simConnectOk);
        session.reset();
        EXPECT_FALSE(server->tryWrite(simulatorMessage(2)));
    }
}

TEST_F(PipeSession, TransfersOutliveTheThreadThatBeganThem) {
    connect();
    std::thread([&] {
        EXPECT_EQ(dispatch(), simConnectOk);
        EXPECT_EQ(setData(7, 8192), simConnectOk);
    }).join();
    server->write(simulatorMessage(2));
    ASSERT_TRUE(dispatchUntil(1));
    EXPECT_EQ(server->readAll(36 + 8192).size(), 36U + 8192U);
    EXPECT_EQ(dispatch(), simConnectOk);
}

TEST(PipeSend, WriteWhoseEndAReceiveHasSeenIsNotMadeAgain) {
    const PipeServer server(PIPE_TYPE_BYTE, 1024);
    Pipe client = connectPipe(".", server.pipeName(), milliseconds(0));
    const PeerBytes sent(5000, 7);
    ASSERT_EQ(client.send(sent).status, TransferStatus::WouldBlock);
    EXPECT_EQ(server.readAll(sent.size()), sent);
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

} // namespace
