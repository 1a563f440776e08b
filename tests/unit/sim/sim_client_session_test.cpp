#include "tests/unit/sim/sim_client_session_fixture.h"

namespace {

const std::string openCall = R"(Open("bridge", null, 0, null, 0))";
const std::string defineCall = R"(AddToDataDefinition(h1, 1, "ELECTRICAL MASTER BATTERY:2", "Bool", 1, 0, 0xFFFFFFFF))";
const std::string requestCall = "RequestDataOnSimObject(h1, 1, 1, 0, 3, 1, 0, 0, 0)";
const std::string announced = "[INFO] announced up";
const std::string connectedLine = "[INFO] SimConnect connected";

} // namespace

class OpenSession : public SessionFixture {};

TEST_F(OpenSession, AsksForTheBatteryThenAnnouncesAndLogsTheConnection) {
    EXPECT_TRUE(open());
    EXPECT_EQ(sim.calls(), (Lines{openCall, defineCall, requestCall}));
    EXPECT_EQ(log.lines(), (Lines{announced, connectedLine}));
    EXPECT_TRUE(session.isConnected() && session.wasEverConnected());
}

TEST_F(OpenSession, RefusedByTheSimulatorLeavesNothingOpen) {
    sim.script(SimCall::Open, {simConnectFail});
    EXPECT_FALSE(open());
    EXPECT_EQ(error, "SimConnect_Open failed (0x80004005)");
    EXPECT_FALSE(session.isConnected() || session.wasEverConnected());
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(OpenSession, WatchesTheChosenBattery) {
    session.setBatteryIndex(16);
    open();
    EXPECT_EQ(sim.calls().at(1),
              R"(AddToDataDefinition(h1, 1, "ELECTRICAL MASTER BATTERY:16", "Bool", 1, 0, 0xFFFFFFFF))");
}

TEST_F(OpenSession, SucceedsWithoutTheBatterysDefinition) {
    sim.script(SimCall::AddToDataDefinition, {simConnectFail});
    EXPECT_TRUE(open());
    EXPECT_EQ(sim.calls(), (Lines{openCall, defineCall}));
    EXPECT_EQ(log.lines(),
              (Lines{"[WARN] SimConnect data definitions failed: SimConnect_AddToDataDefinition failed (0x80004005)",
                     announced, connectedLine}));
}

TEST_F(OpenSession, SucceedsWithoutTheBatterysRequest) {
    sim.script(SimCall::RequestDataOnSimObject, {-1});
    EXPECT_TRUE(open());
    EXPECT_EQ(sim.calls(), (Lines{openCall, defineCall, requestCall}));
    EXPECT_EQ(log.lines(),
              (Lines{"[WARN] SimConnect data request failed: SimConnect_RequestDataOnSimObject failed (0xFFFFFFFF)",
                     announced, connectedLine}));
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

TEST_F(OpenSession, LostBeforeTheRequestIsNamedThere) {
    SimClientSession* lost = nullptr;
    SimConnectLibrary library = sim.library();
    library.addToDataDefinition = [&](auto...) {
        lost->close("test");
        return simConnectOk;
    };
    SimClientSession losing(library);
    lost = &losing;
    EXPECT_TRUE(losing.open("bridge", error));
    EXPECT_EQ(sim.calls(), (Lines{openCall, "Close(h1)"}));
    EXPECT_EQ(log.linesWith("WARN"), (Lines{"[WARN] SimConnect data request failed: SimConnect handle unavailable"}));
}

TEST_F(OpenSession, PositiveResultsAreSuccesses) {
    for (const SimCall call :
         {SimCall::Open, SimCall::AddToDataDefinition, SimCall::RequestDataOnSimObject, SimCall::CallDispatch}) {
        sim.setResult(call, 1);
    }
    EXPECT_TRUE(open());
    session.poll();
    EXPECT_EQ(log.lines(), (Lines{announced, connectedLine}));
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

TEST_F(OpenSession, LogsTheLibrarysNoticeOnceBeforeTheFirstOpen) {
    std::vector<std::size_t> opensAtQuestion;
    SimConnectLibrary library = sim.library();
    library.notice = [&] {
        opensAtQuestion.push_back(sim.count(SimCall::Open));
        return std::string("no library");
    };
    SimClientSession warned(library);
    sim.script(SimCall::Open, {simConnectFail});
    EXPECT_FALSE(warned.open("", error));
    EXPECT_TRUE(warned.open("", error));
    EXPECT_EQ(opensAtQuestion, (std::vector<std::size_t>{0}));
    EXPECT_EQ(log.lines(), (Lines{"[WARN] no library", connectedLine}));
}

TEST_F(OpenSession, LogsNoEmptyNotice) {
    SimConnectLibrary library = sim.library();
    library.notice = [] { return std::string(); };
    SimClientSession silent(library);
    EXPECT_TRUE(silent.open("", error));
    EXPECT_EQ(log.lines(), (Lines{connectedLine}));
}

class SessionEnd : public SessionFixture {};

TEST_F(SessionEnd, IsLoggedThenAnnouncedOnce) {
    connect();
    session.close("test");
    session.close("again");
    EXPECT_EQ(sim.calls(), (Lines{"Close(h1)"}));
    EXPECT_EQ(log.lines(), (Lines{"[WARN] SimConnect disconnected: test", "[INFO] announced down"}));
    EXPECT_FALSE(session.isConnected());
    EXPECT_EQ(session.connectedHandle(), nullptr);
    EXPECT_TRUE(session.wasEverConnected());
}

TEST_F(SessionEnd, OfNoSessionIsNothing) {
    session.close("test");
    session.poll();
    EXPECT_EQ(sim.calls(), Lines());
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(SessionEnd, FollowsAFailedDispatch) {
    connect();
    sim.script(SimCall::CallDispatch, {simConnectRemoteDisconnect});
    session.poll();
    EXPECT_EQ(sim.calls(), (Lines{"CallDispatch(h1) failed", "Close(h1)"}));
    EXPECT_EQ(log.lines(),
              (Lines{"[WARN] SimConnect disconnected: dispatch error 0xC000013C", "[INFO] announced down"}));
}

TEST_F(SessionEnd, FollowsAQuitWhateverElseIsThere) {
    connect();
    sim.deliverQuit();
    sim.deliverBattery(1);
    sim.script(SimCall::CallDispatch, {simConnectFail});
    session.poll();
    EXPECT_EQ(log.lines(), (Lines{"[WARN] SimConnect disconnected: SimConnect quit", "[INFO] announced down",
                                  "[INFO] Simulator closed; requesting application shutdown", "[INFO] asked to quit"}));
}

TEST_F(SessionEnd, RequestsTheShutdownOnceInTheProcesssLife) {
    session.requestShutdown();
    connect();
    sim.deliverQuit();
    session.poll();
    EXPECT_EQ(log.linesWith("quit"), (Lines{"[WARN] SimConnect disconnected: SimConnect quit"}));
}

TEST_F(SessionEnd, ShutdownWithoutACallbackIsSilentAndSpent) {
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
    const Bytes body(64);
    const struct {
        Bytes message;
        Lines lines;
    } rows[] = {
        {FakeSimConnect::message(simConnectRecvOpen, Bytes(296)), {"[INFO] SimConnect session opened"}},
        {battery(1, {1, 0, 0, 0}), {"[INFO] battery on"}},
        {battery(1, {0, 0, 0, 0}), {"[INFO] battery off"}},
        {battery(1, {0, 0, 0, 1}), {"[INFO] battery on"}},
        {battery(1, {255, 255, 255, 255}), {"[INFO] battery on"}},
        // The first word alone counts.
        {battery(1, {0, 0, 0, 0, 1, 1, 1, 1}), {"[INFO] battery off"}},
        // Other requests don't change the battery.
        {battery(0, {1, 0, 0, 0}), {}},
        {battery(2, {1, 0, 0, 0}), {}},
        {battery(0x101, {1, 0, 0, 0}), {}},
        {clientData(0x1200, {'a', 'b', 'c'}), {"[INFO] data 4608:abc"}},
        {clientData(7, {'x'}), {"[INFO] data 7:x"}},
        // Just the header of 40 bytes.
        {clientData(0x1200, {}), {}},
        // The simulator's exceptions, and kinds that nobody asked for.
        {FakeSimConnect::message(0, body), {}},
        {FakeSimConnect::message(1, body), {}},
        {FakeSimConnect::message(4, body), {}},
        {FakeSimConnect::message(9, body), {}},
        {FakeSimConnect::message(17, body), {}},
        {FakeSimConnect::message(0xFFFFFFFF, body), {}},
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

TEST_F(SessionMessages, TruncatedOnesAreIgnored) {
    connect();
    for (const Bytes& whole :
         {battery(1, {1, 1, 1, 1}), clientData(1, {}), FakeSimConnect::message(simConnectRecvQuit, {})}) {
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

TEST_F(SessionMessages, WithoutCallbacksAreDropped) {
    connect();
    session.setBatteryCallback(nullptr);
    session.setClientDataCallback(nullptr);
    sim.deliverBattery(1);
    sim.deliverClientData(0x1200, {'a'});
    session.poll();
    EXPECT_TRUE(sim.allDelivered());
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(SessionMessages, CallbacksMayReplaceThemselves) {
    connect();
    session.setBatteryCallback([this](bool) {
        logInfo("first");
        session.setBatteryCallback([](bool) { logInfo("second"); });
    });
    session.setClientDataCallback([this](std::uint32_t, const std::uint8_t*, std::uint32_t) {
        logInfo("only");
        session.setClientDataCallback(nullptr);
    });
    for (int time = 0; time < 2; ++time) {
        sim.deliverBattery(1);
        sim.deliverClientData(1, {'a'});
    }
    session.poll();
    EXPECT_EQ(log.lines(), (Lines{"[INFO] first", "[INFO] only", "[INFO] second"}));
}
