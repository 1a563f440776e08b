// Requests that other clients make and the bridge's own client library doesn't.

#include "simulation/simulator/simulator_exceptions.h"
#include "tests/unit/simulation/raw_client.h"
#include "tests/unit/simulation/simulator_client.h"

namespace {

using namespace SimConnectWire;
namespace ExceptionCodes = SimulatorExceptions;

constexpr std::uint32_t eventEx1 = 27;
constexpr std::uint32_t simobjectDataByType = 9;
constexpr std::uint32_t systemState = 15;
constexpr std::uint32_t unknownGroup = 0xFFFFFFFF;
constexpr std::uint32_t group = 5;
constexpr std::uint32_t event = 6;

/// A client that listens for an event in a group.
void listen(RawClient& client, std::string_view name) {
    client.requestByName(mapClientEventToSimEventRequest, event, name);
    client.request(addClientEventToNotificationGroupRequest, {group, event, 0});
    client.request(setNotificationGroupPriorityRequest, {group, 1});
}

/// Fires the client's event with a value.
void fire(RawClient& client, std::uint32_t value = 0) {
    client.request(transmitClientEventRequest, {0, event, value, 1, 0x10});
}

/// Defines the battery as INT32 under a definition's id.
void defineBattery(RawClient& client, std::uint32_t definition, std::uint32_t datum) {
    PeerBytes body = wireWords({definition});
    const std::string_view name = "ELECTRICAL MASTER BATTERY:2";
    body.insert(body.end(), name.begin(), name.end());
    body.resize(4 + 2 * nameFieldSize);
    const PeerBytes tail = wireWords({simConnectDataTypeInt32, 0, datum});
    body.insert(body.end(), tail.begin(), tail.end());
    client.request(addToDataDefinitionRequest, body);
}

class SimulatorRequests : public testing::Test {
protected:
    RunningSimulator simulator;
    RawClient client{simulator};
};
using SimulatorEvents = SimulatorRequests;
using SystemEvents = SimulatorRequests;
using SystemState = SimulatorRequests;
using SimulatorVariables = SimulatorRequests;

TEST_F(SimulatorEvents, UnknownNameIsRefusedUnlessItIsCustomOrANumber) {
    client.expectRefusalByName(mapClientEventToSimEventRequest, 1, "AP_MASTR", ExceptionCodes::nameUnrecognized, 2);
    client.requestByName(mapClientEventToSimEventRequest, 1, "MobiFlight.AP_MASTR");
    client.requestByName(mapClientEventToSimEventRequest, 2, "#65752");
    client.requestByName(mapClientEventToSimEventRequest, 3, "");
    client.expectNothing();
}

TEST_F(SimulatorEvents, ReachEveryClientThatListensForTheName) {
    RawClient listener(simulator);
    listen(listener, "ap_master");
    listener.expectNothing();
    listen(client, "AP_MASTER");
    fire(client, 9);
    client.expect(simConnectRecvEvent, {group, event, 9});
    listener.expect(simConnectRecvEvent, {group, event, 9});
    client.request(transmitClientEventEx1Request, {0, event, 1, 0x10, 11, 12, 13, 14, 15});
    listener.expect(eventEx1, {group, event, 11, 12, 13, 14, 15});
}

TEST_F(SimulatorEvents, ReachNoClientThatHasStoppedListening) {
    client.requestByName(mapClientEventToSimEventRequest, event, "AP_MASTER");
    fire(client);
    client.request(addClientEventToNotificationGroupRequest, {group, event, 0});
    // Without a priority the group gets nothing.
    fire(client);
    client.expectNothing();
    client.request(setNotificationGroupPriorityRequest, {group, 1});
    client.request(removeClientEventRequest, {group, event});
    fire(client);
    client.request(addClientEventToNotificationGroupRequest, {group, event, 0});
    client.request(clearNotificationGroupRequest, {group});
    fire(client);
    client.expectNothing();
}

TEST_F(SimulatorEvents, PrivateOnesReachNobody) {
    RawClient listener(simulator);
    listen(listener, "");
    client.requestByName(mapClientEventToSimEventRequest, event, "");
    fire(client);
    client.expectNothing();
    listener.expectNothing();
}

TEST_F(SimulatorEvents, GroupRequestsAreRefusedWithTheirArgument) {
    client.expectRefusal(addClientEventToNotificationGroupRequest, {group, event, 0}, ExceptionCodes::unrecognizedId,
                         2);
    for (const std::uint32_t type : {removeClientEventRequest, setNotificationGroupPriorityRequest,
                                     clearNotificationGroupRequest, requestNotificationGroupRequest}) {
        client.expectRefusal(type, {group, event, 0}, ExceptionCodes::unrecognizedId, 1);
    }
    listen(client, "AP_MASTER");
    client.request(requestNotificationGroupRequest, {group, 0, 0});
    client.expectRefusal(removeClientEventRequest, {group, 99}, ExceptionCodes::unrecognizedId, 2);
    for (std::uint32_t number = 100; number < 119; ++number) {
        client.request(addClientEventToNotificationGroupRequest, {number, event, 0});
    }
    client.expectRefusal(addClientEventToNotificationGroupRequest, {200, event, 0}, ExceptionCodes::tooManyGroups, 1);
}

TEST_F(SystemEvents, StateIsSentAtOnce) {
    client.requestByName(subscribeToSystemEventRequest, 1, "Sim");
    client.expect(simConnectRecvEvent, {unknownGroup, 1, 1});
    client.requestByName(subscribeToSystemEventRequest, 2, "pause");
    client.expect(simConnectRecvEvent, {unknownGroup, 2, 0});
    client.requestByName(subscribeToSystemEventRequest, 3, "AircraftLoaded");
    client.request(setSystemEventStateRequest, {3, 0});
    client.request(unsubscribeFromSystemEventRequest, {3});
    client.requestByName(mapClientEventToSimEventRequest, 3, "AP_MASTER");
    client.expectNothing();
}

TEST_F(SystemEvents, RequestsAreRefusedWithTheirArgument) {
    client.expectRefusalByName(subscribeToSystemEventRequest, 1, "NoSuchEvent", ExceptionCodes::nameUnrecognized, 2);
    // There are no frames here.
    client.expectRefusalByName(subscribeToSystemEventRequest, 1, "Frame", ExceptionCodes::error, 2);
    client.expectRefusal(unsubscribeFromSystemEventRequest, {1}, ExceptionCodes::unrecognizedId, 1);
    client.expectRefusal(setSystemEventStateRequest, {1, 0}, ExceptionCodes::unrecognizedId, 1);
    client.requestByName(subscribeToSystemEventRequest, 1, "SimStop");
    client.expectRefusal(setSystemEventStateRequest, {1, 2}, ExceptionCodes::invalidEnum, 2);
    client.expectRefusalByName(mapClientEventToSimEventRequest, 1, "AP_MASTER", ExceptionCodes::eventIdDuplicate, 1);
}

TEST_F(SystemState, OfAKnownNameIsAnsweredAndAnotherNameRefused) {
    client.requestByName(requestSystemStateRequest, 7, "Sim");
    PeerBytes body = wireWords({7, 1, 0});
    body.resize(12 + 260);
    client.expect(systemState, body);
    client.requestByName(requestSystemStateRequest, 8, "FlightLoaded");
    const PeerBytes answer = client.next();
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&answer.at(24))), "Virtual.flt");
    client.expectRefusalByName(requestSystemStateRequest, 9, "NoSuchState", ExceptionCodes::nameUnrecognized, 2);
}

TEST_F(SimulatorVariables, AreTaggedOnRequest) {
    defineBattery(client, 1, 70);
    defineBattery(client, 1, 71);
    client.request(requestDataOnSimObjectRequest, {2, 1, 0, simConnectPeriodSimFrame, 3, 0, 0, 0});
    client.expect(simConnectRecvSimobjectData, {2, 0, 1, 3, 1, 1, 2, 70, 0, 71, 0});
    simulator.setBattery(true);
    client.expect(simConnectRecvSimobjectData, {2, 0, 1, 3, 1, 1, 2, 70, 1, 71, 1});
}

TEST_F(SimulatorVariables, CanBeRequestedByTheKindOfObject) {
    defineBattery(client, 1, 0);
    client.request(requestDataOnSimObjectTypeRequest, {2, 1, 0, 0});
    client.expect(simobjectDataByType, {2, 1, 1, 0, 1, 1, 1, 0});
    client.expectRefusal(requestDataOnSimObjectTypeRequest, {2, 9, 0, 0}, ExceptionCodes::unrecognizedId, 2);
    // No boats here.
    client.expectRefusal(requestDataOnSimObjectTypeRequest, {2, 1, 0, 4}, ExceptionCodes::error, 4);
    client.expectRefusal(requestDataOnSimObjectTypeRequest, {2, 1, 0, 6}, ExceptionCodes::invalidEnum, 4);
}

TEST_F(SimulatorVariables, CanBeSet) {
    defineBattery(client, 1, 70);
    client.request(requestDataOnSimObjectRequest, {2, 1, 0, simConnectPeriodSimFrame, 1, 0, 0, 0});
    client.expect(simConnectRecvSimobjectData, {2, 0, 1, 1, 1, 1, 1, 0});
    client.request(setDataOnSimObjectRequest, {1, 0, 0, 0, 4, 1});
    client.expect(simConnectRecvSimobjectData, {2, 0, 1, 1, 1, 1, 1, 1});
    // Tagged.
    client.request(setDataOnSimObjectRequest, {1, 0, 1, 1, 8, 70, 0});
    client.expect(simConnectRecvSimobjectData, {2, 0, 1, 1, 1, 1, 1, 0});
    client.expectRefusal(setDataOnSimObjectRequest, {9, 0, 0, 0, 4, 1}, ExceptionCodes::unrecognizedId, 1);
    client.expectRefusal(setDataOnSimObjectRequest, {1, 9, 0, 0, 4, 1}, ExceptionCodes::unrecognizedId, 2);
    client.expectRefusal(setDataOnSimObjectRequest, {1, 0, 0, 2, 4, 1, 1}, ExceptionCodes::invalidArray, 4);
    client.expectRefusal(setDataOnSimObjectRequest, {1, 0, 0, 0, 5, 1}, ExceptionCodes::sizeMismatch, 5);
    client.expectRefusal(setDataOnSimObjectRequest, {1, 0, 1, 0, 8, 71, 1}, ExceptionCodes::datumId, 6);
}

TEST_F(SimulatorRequests, AreaIsCreatedOnceByTheNameOfAnId) {
    client.expectRefusal(createClientDataRequest, {7, 4, 0}, ExceptionCodes::unrecognizedId, 1);
    PeerBytes named(nameFieldSize);
    std::ranges::copy(std::string_view("Own"), named.begin());
    const PeerBytes id = wireWords({7});
    named.insert(named.end(), id.begin(), id.end());
    client.request(mapClientDataNameToIdRequest, named);
    client.expectRefusal(createClientDataRequest, {7, 0, 0}, ExceptionCodes::invalidDataSize, 2);
    client.request(createClientDataRequest, {7, 4, 0});
    client.expectRefusal(createClientDataRequest, {7, 4, 0}, ExceptionCodes::alreadyCreated, 1);
}

} // namespace
