#include "tests/unit/sim/session_log_lines.h"
#include "tests/unit/sim/sim_client_session_fixture.h"

namespace {

const std::string openCall = R"(Open("bridge", null, 0, null, 0))";
const std::string defineCall = R"(AddToDataDefinition(h1, 1, "ELECTRICAL MASTER BATTERY:2", "Bool", 1, 0, 0xFFFFFFFF))";
const std::string requestCall = "RequestDataOnSimObject(h1, 1, 1, 0, 3, 1, 0, 0, 0)";

} // namespace

class OpenSession : public SessionFixture {};

TEST_F(OpenSession, AsksForTheBatteryThenAnnouncesAndLogsTheConnection) {
    EXPECT_TRUE(open());
    EXPECT_EQ(sim.calls(), (Lines{openCall, defineCall, requestCall}));
    EXPECT_EQ(log.lines(), (Lines{announcedUp, connectedLine}));
    EXPECT_TRUE(session.isConnected() && session.wasEverConnected());
}

TEST_F(OpenSession, RefusedByTheSimulatorLeavesNothingOpen) {
    sim.script(SimCall::Open, {simConnectFail});
    EXPECT_FALSE(open());
    EXPECT_EQ(error, "SimConnect_Open failed (0x80004005)");
    EXPECT_FALSE(session.isConnected() || session.wasEverConnected());
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(OpenSession, SucceedsWithoutTheBattery) {
    sim.script(SimCall::AddToDataDefinition, {simConnectFail});
    EXPECT_TRUE(open());
    EXPECT_EQ(sim.takeCalls(), (Lines{openCall, defineCall}));
    session.close("test");
    sim.script(SimCall::RequestDataOnSimObject, {-1});
    EXPECT_TRUE(open());
    EXPECT_TRUE(session.isConnected());
    EXPECT_EQ(log.linesWith("failed"),
              (Lines{"[WARN] SimConnect data definitions failed: SimConnect_AddToDataDefinition failed (0x80004005)",
                     "[WARN] SimConnect data request failed: SimConnect_RequestDataOnSimObject failed (0xFFFFFFFF)"}));
}

TEST_F(OpenSession, WithoutAHandleDefinesNothingAndCanDoNothing) {
    SimConnectLibrary library = sim.library();
    library.open = [](auto...) { return simConnectOk; };
    SimClientSession without(library);
    EXPECT_TRUE(without.open("bridge", error));
    without.poll();
    EXPECT_FALSE(without.transmitEvent("A", error));
    EXPECT_EQ(error, "SimConnect is not connected");
    without.close("test");
    EXPECT_FALSE(without.isConnected());
    EXPECT_EQ(sim.calls(), Lines());
    EXPECT_EQ(log.lines(),
              (Lines{"[WARN] SimConnect data definitions failed: SimConnect handle unavailable", connectedLine}));
}

TEST_F(OpenSession, LostBeforeTheDataRequestIsAWarningOfThatRequest) {
    SimClientSession* opening = nullptr;
    SimConnectLibrary library = sim.library();
    library.addToDataDefinition = [&](auto...) {
        opening->close("test");
        return simConnectOk;
    };
    SimClientSession losing(library);
    opening = &losing;
    EXPECT_TRUE(losing.open("bridge", error));
    EXPECT_EQ(sim.calls(), (Lines{openCall, "Close(h1)"}));
    EXPECT_EQ(log.linesWith("WARN"), (Lines{"[WARN] SimConnect data request failed: SimConnect handle unavailable"}));
}

TEST_F(OpenSession, OpenedAgainClosesTheSurplusHandleSilently) {
    connect();
    const SimConnectHandle before = session.connectedHandle();
    EXPECT_TRUE(open());
    EXPECT_EQ(sim.calls(), (Lines{openCall, "Close(h2)"}));
    EXPECT_EQ(session.connectedHandle(), before);
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(OpenSession, CanBeUsedByTheConnectionCallback) {
    bool mapped = false;
    session.setConnectionCallback([&](bool) { mapped = session.mapClientDataName("Area", 0x1000, error); });
    open();
    EXPECT_TRUE(mapped);
}

TEST_F(OpenSession, LogsTheLibrarysNoticeOnceBeforeTheFirstOpenUnlessItIsEmpty) {
    for (const std::string& notice : {std::string("no library"), std::string()}) {
        std::vector<std::size_t> opensAtQuestion;
        const std::size_t opens = sim.count(SimCall::Open);
        SimConnectLibrary library = sim.library();
        library.notice = [&] {
            opensAtQuestion.push_back(sim.count(SimCall::Open));
            return notice;
        };
        SimClientSession other(library);
        sim.script(SimCall::Open, {simConnectFail});
        EXPECT_FALSE(other.open("", error));
        EXPECT_TRUE(other.open("", error));
        EXPECT_EQ(opensAtQuestion, std::vector{opens});
    }
    EXPECT_EQ(log.lines(), (Lines{"[WARN] no library", connectedLine, connectedLine}));
}

class SessionEnd : public SessionFixture {};

TEST_F(SessionEnd, IsLoggedThenAnnouncedOnce) {
    connect();
    sim.setHook([this](SimCall call) {
        EXPECT_TRUE(call == SimCall::Close && session.connectedHandle() == nullptr) << "handle still in use";
    });
    session.close("test");
    session.close("again");
    session.poll();
    EXPECT_EQ(sim.calls(), (Lines{"Close(h1)"}));
    EXPECT_EQ(log.lines(), (Lines{"[WARN] SimConnect disconnected: test", announcedDown}));
    EXPECT_FALSE(session.isConnected());
    EXPECT_TRUE(session.wasEverConnected());
}

TEST_F(SessionEnd, FollowsAFailedDispatch) {
    connect();
    sim.script(SimCall::CallDispatch, {simConnectRemoteDisconnect});
    session.poll();
    EXPECT_EQ(sim.calls(), (Lines{"CallDispatch(h1) failed", "Close(h1)"}));
    EXPECT_EQ(log.lines(), (Lines{"[WARN] SimConnect disconnected: dispatch error 0xC000013C", announcedDown}));
}

TEST_F(SessionEnd, FollowsAQuitWhateverElseIsThere) {
    connect();
    sim.deliverQuit();
    sim.deliverBattery(1);
    sim.script(SimCall::CallDispatch, {simConnectFail});
    session.poll();
    EXPECT_EQ(log.lines(), (Lines{"[WARN] SimConnect disconnected: SimConnect quit", announcedDown,
                                  "[INFO] Simulator closed; requesting application shutdown", "[INFO] asked to quit"}));
}

TEST_F(SessionEnd, RequestsTheShutdownOnceInTheProcesssLifeEvenWithoutACallback) {
    session.setQuitCallback(nullptr);
    session.requestShutdown();
    session.setQuitCallback([] { logInfo("asked to quit"); });
    session.requestShutdown();
    EXPECT_EQ(log.lines(), Lines());
}

class SessionMessages : public SessionFixture {
protected:
    static Bytes battery(std::uint32_t request, const Bytes& data) {
        return FakeSimConnect::dataMessage(simConnectRecvSimobjectData, request, data);
    }
    static Bytes clientData(std::uint32_t request, const Bytes& data) {
        return FakeSimConnect::dataMessage(simConnectRecvClientData, request, data);
    }
};

TEST_F(SessionMessages, EachDoesWhatItsKindAsksFor) {
    const struct {
        Bytes message;
        Lines lines;
    } rows[] = {
        {FakeSimConnect::message(simConnectRecvOpen, Bytes(296)), {"[INFO] SimConnect session opened"}},
        {battery(1, {1, 0, 0, 0}), {"[INFO] battery on"}},
        {battery(1, {0, 0, 0, 0}), {"[INFO] battery off"}},
        {battery(1, {0, 0, 0, 1}), {"[INFO] battery on"}},
        // The first word alone counts.
        {battery(1, {0, 0, 0, 0, 1, 1, 1, 1}), {"[INFO] battery off"}},
        // Other requests don't change the battery.
        {battery(0, {1, 0, 0, 0}), {}},
        {battery(2, {1, 0, 0, 0}), {}},
        {battery(0x101, {1, 0, 0, 0}), {}},
        {clientData(0x1200, {'a', 'b', 'c'}), {"[INFO] data 4608:abc"}},
        {clientData(7, {'x'}), {"[INFO] data 7:x"}},
        // The simulator's exceptions, and kinds that nobody requested.
        {FakeSimConnect::message(1, Bytes(64)), {}},
        {FakeSimConnect::message(9, Bytes(64)), {}},
        {FakeSimConnect::message(0xFFFFFFFF, Bytes(64)), {}},
    };
    connect();
    for (const auto& row : rows) {
        log.clear();
        sim.deliver(row.message);
        session.poll();
        EXPECT_EQ(log.lines(), row.lines) << "row " << &row - rows;
    }
    EXPECT_TRUE(session.isConnected());
}

TEST_F(SessionMessages, IncompleteOnesAreIgnored) {
    connect();
    for (const Bytes& whole :
         {battery(1, {1, 1, 1, 1}), clientData(1, {'a'}), FakeSimConnect::message(simConnectRecvQuit, {})}) {
        for (std::size_t size = 0; size < whole.size(); ++size) {
            sim.deliver({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)});
        }
    }
    session.poll();
    EXPECT_TRUE(sim.allDelivered());
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(SessionMessages, NullMessageOrContextIsIgnored) {
    SimConnectLibrary library = sim.library();
    SimConnectRecv quit{12, 4, simConnectRecvQuit};
    library.callDispatch = [&](SimConnectHandle, SimConnectDispatchProc proc, void* context) {
        proc(nullptr, 12, context);
        proc(&quit, 12, nullptr);
        return simConnectOk;
    };
    SimClientSession other(library);
    EXPECT_TRUE(other.open("", error));
    other.poll();
    EXPECT_TRUE(other.isConnected());
}

TEST_F(SessionMessages, CallbacksMayRemoveThemselves) {
    connect();
    session.setBatteryCallback([this](bool) {
        logInfo("battery");
        session.setBatteryCallback(nullptr);
    });
    session.setClientDataCallback([this](std::uint32_t, const std::uint8_t*, std::uint32_t) {
        logInfo("data");
        session.setClientDataCallback(nullptr);
    });
    for (int time = 0; time < 2; ++time) {
        sim.deliverBattery(1);
        sim.deliverClientData(1, {'a'});
    }
    session.poll();
    EXPECT_TRUE(sim.allDelivered());
    EXPECT_EQ(log.lines(), (Lines{"[INFO] battery", "[INFO] data"}));
}
